#include "client/cli/CommandLine.h"

#include <log4cplus/logger.h>

#include <CLI/CLI.hpp>
#include <QTextCodec>
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "client/cli/agent/AgentCommand.h"
#include "client/cli/agent/FoldersCommand.h"
#include "client/cli/agent/LoginCommand.h"
#include "client/cli/agent/StatusCommand.h"
#include "client/cli/commands/Failure.h"
#include "client/cli/commands/ListCommand.h"
#include "client/cli/commands/MakeFolderCommand.h"
#include "client/cli/commands/PullCommand.h"
#include "client/cli/commands/PushCommand.h"
#include "client/cli/commands/SettingsCommand.h"
#include "client/cli/commands/SizeCommand.h"
#include "client/cli/commands/StatCommand.h"
#include "client/cli/commands/SyncCommand.h"
#include "client/cli/commands/TreeCommand.h"
#include "client/cli/commands/VersionCommand.h"
#include "client/cli/files/CheckCommand.h"
#include "client/cli/files/CopyCommand.h"
#include "client/cli/files/GetCommand.h"
#include "client/cli/files/PutCommand.h"
#include "client/cli/files/RemoveCommand.h"
#include "client/cli/input/ArgumentOrder.h"
#include "client/cli/input/Credentials.h"
#include "client/cli/input/Interruption.h"
#include "client/cli/input/Location.h"
#include "client/cli/offline/ConflictsCommand.h"
#include "client/cli/offline/TrashCommand.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/ErrorText.h"
#include "client/cli/output/LoggedErrors.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace cli {

using commands::CommandRegistry;
using input::Arguments;
using input::CommandFirst;
using input::FindCredentials;
using input::Interruption;
using input::Location;
using library::ServiceConnection;
using output::Complain;
using output::ErrorText;
using output::ExitCode;
using output::LoggedErrors;
using output::Output;
using output::ShownInErrors;

namespace {

const char* const Footer =
    "Options may stand before or after the command.\n"
    "Exit status: 0 done, 1 the service said no or something is left for you to do, 2 wrong usage, 3 the service could "
    "not be reached or understood, or is busy.\n"
    "The password of a user comes from the environment variable OVSYNC_PASSWORD, from the desktop's keyring, from "
    "~/.netrc or from a prompt.\n"
    "Proxies come from http_proxy, https_proxy, all_proxy and no_proxy.";

/// `text` may have several lines.
void ComplainOfUsage(const std::string& text, bool asJson) {
    const QStringList lines = QString::fromStdString(text).trimmed().split(QLatin1Char('\n'));
    Complain({"usage", lines.first()}, ExitCode::WrongUsage, {asJson, false});
    for (const QString& line : asJson ? QStringList() : lines.mid(1)) {
        std::cerr << ShownInErrors(line).toStdString() + '\n';
    }
}

/// Whose the first option in `unknown` is that there is at all; empty for none.
std::string OwnersOf(const std::vector<std::string>& unknown, const CLI::App& app) {
    for (const std::string& word : unknown) {
        if (word.size() < 2 || word[0] != '-') {
            continue;
        }
        const std::string option = word[1] == '-' ? word.substr(0, word.find('=')) : word.substr(0, 2);
        QStringList owners;
        for (const std::string& command : input::CommandsWith(app, option)) {
            owners.append(QString::fromStdString(command));
        }
        if (!owners.isEmpty()) {
            return option + " is an option of " + owners.join(QStringLiteral(", ")).toStdString() + " only";
        }
        if (app.get_option_no_throw(option) != nullptr) {
            return option + " is an option of ovsync itself";
        }
    }
    return std::string();
}

/// It would be dropped, and what has the name without it be taken.
void RefuseByteOrderMarks(int argc, const char* const* argv) {
    const std::string mark = "\xEF\xBB\xBF";
    for (int at = 1; at < argc; ++at) {
        const std::string word = argv[at];
        if (word.compare(0, mark.size(), mark) == 0) {
            throw CLI::ValidationError("\"" + word.substr(mark.size()) +
                                       "\" begins with a byte order mark, which nobody sees; leave it away, or write "
                                       "./ before it where it belongs to a file's name");
        }
    }
}

/// What is wrong with a command line of which `error` was thrown, and `complaint` written.
std::string UsageText(const CLI::ParseError& error, const std::string& complaint, const CLI::App& app) {
    std::vector<std::string> unknown = app.remaining(true);
    // A group of commands takes the options that all have only after its command.
    unknown.erase(std::remove(unknown.begin(), unknown.end(), "--json"), unknown.end());
    const std::string owners = OwnersOf(unknown, app);
    // Whatever is missing is named before anything that is too much.
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        const std::string first = unknown.empty() ? std::string() : unknown.front() + " is not known here";
        const std::string tooMuch = owners.empty() ? first : owners;
        return tooMuch + (tooMuch.empty() ? "" : ". ") + complaint;
    }
    const bool isTooMuch = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr && !owners.empty();
    return isTooMuch ? owners + complaint.substr(complaint.find('\n')) : complaint;
}

/// In the order in which help shows them.
void AddCommands(CommandRegistry& registry) {
    commands::AddListCommand(registry);
    commands::AddTreeCommand(registry);
    commands::AddSizeCommand(registry);
    commands::AddStatCommand(registry);
    files::AddGetCommand(registry);
    files::AddCatCommand(registry);
    files::AddPutCommand(registry);
    commands::AddMakeFolderCommand(registry);
    files::AddRemoveCommand(registry);
    files::AddMoveCommand(registry);
    files::AddCopyCommand(registry);
    commands::AddSyncCommand(registry);
    commands::AddPullCommand(registry);
    commands::AddPushCommand(registry);
    files::AddCheckCommand(registry);
    commands::AddSettingsCommand(registry);
    commands::AddVersionCommand(registry);
    commands::AddFoldersCommand(registry);
    commands::AddLoginCommand(registry);
    commands::AddAgentCommand(registry);
    commands::AddStatusCommand(registry);
    offline::AddConflictsCommand(registry);
    offline::AddTrashCommand(registry);
}

}  // namespace

ExitCode RunCommandLine(int argc, const char* const* argv) {
    // Names of files are UTF-8, whatever the locale is.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // A file that may not become so large is a failure of that file.
    std::signal(SIGXFSZ, SIG_IGN);
    // What is wrong may be found before the option is.
    const bool asJson = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
    Location location;
    std::optional<ServiceConnection> connection;
    ErrorText::Context context;
    CLI::App app("Lists, looks up and changes what lies on a Drovane service or any other WebDAV server.", "ovsync");
    CommandRegistry registry(app);
    const Arguments& arguments = registry.Given();
    log4cplus::Logger log = log4cplus::Logger::getRoot();
    log.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
    const LoggedErrors loggedErrors(log, [&arguments](const QString& message) {
        if (arguments.isVerbose && !arguments.isJson) {
            Complain(message);
        }
    });
    try {
        app.set_version_flag("--version", std::string("ovsync ") + OVSYNC_VERSION);
        app.require_subcommand(1);
        app.footer(Footer);
        AddCommands(registry);
        try {
            RefuseByteOrderMarks(argc, argv);
            std::vector<std::string> words = CommandFirst(app, argc, argv);
            std::reverse(words.begin(), words.end());
            app.parse(std::move(words));
        } catch (const CLI::ParseError& e) {
            if (asJson && dynamic_cast<const CLI::CallForVersion*>(&e) != nullptr) {
                std::cout << nlohmann::ordered_json{{"name", "ovsync"}, {"version", OVSYNC_VERSION}}.dump() + '\n';
                return ExitCode::Done;
            }
            std::ostringstream errors;
            const bool isDone = app.exit(e, std::cout, errors) == 0;
            if (!isDone) {
                ComplainOfUsage(UsageText(e, errors.str(), app), asJson);
            }
            return isDone ? ExitCode::Done : ExitCode::WrongUsage;
        }

        Output output;
        if (const CommandRegistry::LocalCommand* const command = registry.ParsedLocal()) {
            const ExitCode code = (*command)(arguments, output);
            output.Flush();
            return code;
        }
        location = Location::FromUrl(QString::fromStdString(arguments.url));
        wire::ConnectionSettings settings = arguments.Connecting();
        settings.onProgress = [shown = settings.onProgress, &connection](qint64 bytes, bool isOver) {
            if (Interruption::IsRequested()) {
                connection->Cancel();
            }
            if (shown) {
                shown(bytes, isOver);
            }
        };
        const QString user = arguments.UserAt(location);
        const QString host = location.baseUrl.host();
        const input::FoundCredentials found =
            registry.LogsIn() ? input::NewCredentials(user, host) : FindCredentials(user, host);
        context.server = location.Server();
        context.path = location.serverPath;
        context.user = found.credentials.user();
        context.loginProblem = found.problem;
        context.isWriting = registry.Writes();
        context.hasTarget = !arguments.destination.empty();
        context.lastAnswer = [&connection] { return connection ? connection->LastAnswer() : wire::AnswerSummary(); };
        if (registry.TakesFiles()) {
            context.thing = QStringLiteral("file or folder");
        }
        connection.emplace(location.baseUrl, found.credentials, settings);
        const ExitCode exitCode = (*registry.Parsed())(*connection, location, arguments, output);
        output.Flush();
        return exitCode;
    } catch (const std::exception& e) {
        return commands::ComplainOfFailure(e, context, {asJson, arguments.isVerbose});
    }
}

}  // namespace cli
}  // namespace ovsync
