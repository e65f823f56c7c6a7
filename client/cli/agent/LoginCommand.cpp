#include "client/cli/agent/LoginCommand.h"

#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include "client/agent/AgentClient.h"
#include "client/cli/input/Application.h"
#include "client/cli/input/AsksForNoPassword.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/output/Complaint.h"
#include "client/user/NetrcFile.h"
#include "client/user/Passwords.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::Refusal;
using library::ServiceConnection;
using output::Output;
using output::Warn;
using user::Passwords;
using wire::HttpStatus;

namespace {

/// Throws what the service says to the password, and Refusal when it asks for none.
void Try(ServiceConnection& connection, const Location& location, const Arguments& given) {
    try {
        sync::config::FolderConfiguration found;
        connection.Folders().GetFolderProperties(connection.Folder(location.serverPath), found);
    } catch (const std::exception& e) {
        const auto* const answer = dynamic_cast<const sync::http::HttpException*>(&e);
        const bool isWrong = answer != nullptr && answer->StatusCode() == HttpStatus::Unauthorized;
        if (!isWrong && !given.isQuiet) {
            Warn({"login", QStringLiteral("The password could not be tried, and is not kept; --no-check keeps it.")},
                 given.Errors());
        }
        throw;
    }
    if (input::AsksForNoPassword(location, given.Connecting())) {
        throw Refusal(QStringLiteral("%1 asks for no password here, so this one could not be tried, and is not kept; "
                                     "--no-check keeps it")
                          .arg(location.Server()));
    }
}

void Login(ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
    if (!given.isUntried) {
        Try(connection, location, given);
    }
    const input::Application application;
    const QAuthenticator credentials = connection.Credentials();
    const QString user = credentials.user();
    const QString host = location.baseUrl.host();
    const bool isInKeyring = Passwords().Keep(host, user, credentials.password()) == Passwords::Place::Keyring;
    if (given.isJson) {
        const nlohmann::ordered_json json{
            {"user", user.toStdString()}, {"host", host.toStdString()}, {"place", isInKeyring ? "keyring" : "netrc"}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    } else {
        output.Write(
            "The password of " + output.Shown(user) + " at " + output.Shown(host) + " is in " +
            (isInKeyring ? "the keyring\n" : output.Shown(user::NetrcName()) + ", because no keyring answers\n"));
    }
    // Nothing is amiss where no agent runs.
    [[maybe_unused]] const bool isTold = agent::AgentClient().Send("reload");
}

}  // namespace

void AddLoginCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "login",
        "Tries the password of a user, and keeps it for the commands and the agent, in the desktop's keyring or "
        "~/.netrc.",
        Login);
    registry.MarkAsTakingFiles(command);
    registry.MarkAsLogin(command);
    CommandRegistry::AddText(command, "URL", "The service, for example http://host/", registry.Given().url);
    command->add_flag("--no-check", registry.Given().isUntried, "Keep it without asking the service");
}

}  // namespace commands
}  // namespace ovsync
