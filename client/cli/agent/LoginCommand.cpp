#include "client/cli/agent/LoginCommand.h"

#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include "client/agent/AgentClient.h"
#include "client/cli/input/Application.h"
#include "client/cli/input/Credentials.h"
#include "client/cli/input/UsageError.h"
#include "client/user/Passwords.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::UsageError;
using output::ExitCode;
using output::Output;
using user::Passwords;

namespace {

void Login(const Arguments& given, Output& output) {
    const input::Application application;
    const Location location = Location::FromUrl(QString::fromStdString(given.url));
    const QString user = given.user.empty() ? location.user : QString::fromStdString(given.user);
    if (user.isEmpty()) {
        throw UsageError(QStringLiteral("Give a user name with -u, or before an @ in the URL."));
    }
    const QString host = location.baseUrl.host();
    const bool isInKeyring = Passwords().Keep(host, user, input::AskPassword(user, host)) == Passwords::Place::Keyring;
    if (given.isJson) {
        const nlohmann::ordered_json json{
            {"user", user.toStdString()}, {"host", host.toStdString()}, {"place", isInKeyring ? "keyring" : "netrc"}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    } else {
        output.Write("The password of " + output.Shown(user) + " at " + output.Shown(host) + " is in " +
                     (isInKeyring ? "the keyring\n" : "~/.netrc, because no keyring answers\n"));
    }
    // Nothing is amiss where no agent runs.
    [[maybe_unused]] const bool isTold = agent::AgentClient().Send("reload");
}

}  // namespace

void AddLoginCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddLocal(
        "login", "Keeps the password of a user for the commands and the agent, in the desktop's keyring or ~/.netrc.",
        [](const Arguments& given, Output& output) {
            Login(given, output);
            return ExitCode::Done;
        });
    CommandRegistry::AddText(command, "URL", "The service, for example http://host/", registry.Given().url);
    command->add_option("-u,--user", registry.Given().user, "Name to log in with")->type_name("USER");
}

}  // namespace commands
}  // namespace ovsync
