#include "client/cli/agent/FoldersCommand.h"

#include <CLI/CLI.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>

#include "client/agent/AgentClient.h"
#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/Failure.h"
#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/Application.h"
#include "client/cli/input/AsksForNoPassword.h"
#include "client/cli/input/Credentials.h"
#include "client/cli/input/MakeAt.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/Complaint.h"
#include "client/folders/FoldersFile.h"
#include "client/sync/report/OfferedCommand.h"
#include "client/user/Passwords.h"
#include "client/user/Places.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace commands {

using folders::SyncedFolder;
using input::Arguments;
using input::FoundCredentials;
using input::Location;
using input::Refusal;
using input::SyncArguments;
using input::UsageError;
using library::ServiceConnection;
using output::Complain;
using output::ErrorText;
using output::ExitCode;
using output::Output;
using output::Warn;

namespace {

const char* const FoldersFooter =
    "Exit status: 0 done, 1 the folders file has a mistake or cannot be changed, or the service said no, 2 wrong "
    "usage, 3 the service could not be reached or understood.\n"
    "The folders stand in ovsync/folders.toml in $XDG_CONFIG_HOME, or in ~/.config.";

void TellAgent(const Arguments& given, bool isMissed) {
    if (!agent::AgentClient().Send("reload") && isMissed && !given.isQuiet) {
        Warn({"agent", QStringLiteral("No agent runs that would see to it; \"ovsync agent start\" starts one.")},
             given.Errors());
    }
}

/// Without links where it is there, and as it is named where it is gone.
QString NamedDirectory(const std::string& given) {
    const QFileInfo directory(QString::fromStdString(given));
    const QString real = directory.canonicalFilePath();
    return real.isEmpty() ? QDir::cleanPath(directory.absoluteFilePath()) : real;
}

SyncedFolder GivenFolder(const Arguments& given) {
    const SyncArguments arguments = given.Syncing();
    SyncedFolder folder;
    folder.url = QString::fromStdString(given.url);
    folder.location = Location::FromUrl(folder.url);
    folder.user = given.UserAt(folder.location);
    folder.rules = given.rules;
    folder.deletionLimitText = QString::fromStdString(given.maxDelete.value_or(std::string()));
    folder.daysKept = arguments.daysKept;
    folder.transfers = arguments.transfers;
    if (!given.caFile.empty()) {
        folder.caFile = input::AbsolutePath(QString::fromStdString(given.caFile));
    }
    input::RequireSyncable(arguments.directory);
    const QFileInfo place(QDir::cleanPath(arguments.directory));
    if ((place.exists() || place.isSymLink()) && !place.isDir()) {
        throw UsageError(QStringLiteral("%1 is no folder").arg(arguments.directory));
    }
    folder.directory = place.exists() ? input::AbsolutePath(arguments.directory)
                                      : QDir(input::AbsolutePath(place.path())).filePath(place.fileName());
    return folder;
}

nlohmann::ordered_json SyncedFolderJson(const SyncedFolder& folder) {
    nlohmann::ordered_json rules = nlohmann::ordered_json::array();
    for (const QString& rule : folder.rules) {
        rules.push_back(rule.toStdString());
    }
    return {{"path", folder.directory.toStdString()},
            {"url", folder.url.toStdString()},
            {"user", folder.user.toStdString()},
            {"exclude", rules},
            {"paused", folder.isPaused}};
}

/// Whether the folder is on the service. Throws what the service says to it, and to who logs in; also when there is
/// nothing that it could be made in.
bool IsThere(ServiceConnection& connection, const Location& location) {
    sync::config::FolderConfiguration folder;
    if (connection.Folders().GetFolderProperties(connection.Folder(location.serverPath), folder)) {
        return true;
    }
    const std::optional<library::FoundResource> found = connection.Find(location.serverPath);
    if (found && !found->isFolder) {
        throw Refusal(QStringLiteral("\"%1\" on %2 is a file, and only folders are kept in step")
                          .arg(location.serverPath, location.Server()));
    }
    if (!found && location.serverPath.isEmpty()) {
        ThrowNoSuchFolder(location);
    }
    if (!found) {
        input::RequireFolderAbove(connection, location);
    }
    return found.has_value();
}

/// For people to type.
QString LoginLine(const QString& command, const QString& user, const SyncedFolder& folder) {
    return report::OfferedCommand(command, user, folder.caFile) + QLatin1Char(' ') +
           report::ShellWord(folder.location.Url().toString(QUrl::FullyEncoded));
}

/// Complains of `error`, which is being handled, and with which the service was asked for `folder`.
ExitCode ComplainOfService(const std::exception& error, const ServiceConnection& connection, const SyncedFolder& folder,
                           const FoundCredentials& login, const Arguments& given) {
    const QString user = login.credentials.user();
    const auto* const answer = dynamic_cast<const sync::http::HttpException*>(&error);
    const bool isRejected = answer != nullptr && answer->StatusCode() == wire::HttpStatus::Unauthorized;
    if (isRejected && user.isEmpty() && !folder.user.isEmpty()) {
        input::ThrowNoPassword(folder.user, folder.location.baseUrl.host());
    }
    ErrorText::Context asked;
    asked.server = folder.location.Server();
    asked.path = folder.location.serverPath;
    asked.user = user;
    asked.loginProblem = login.problem;
    asked.lastAnswer = [&connection] { return connection.LastAnswer(); };
    const ExitCode exitCode = ComplainOfFailure(error, asked, given.Errors());
    if (given.isQuiet) {
        return exitCode;
    }
    if (!isRejected) {
        Warn({"folders", QStringLiteral("Nothing was added; --no-check adds the folder without asking the service.")},
             given.Errors());
    } else if (login.areKept && !user.isEmpty()) {
        Warn({"login", QStringLiteral("That password is kept already; \"%1\" keeps another.")
                           .arg(LoginLine(QStringLiteral("login"), user, folder))},
             given.Errors());
    }
    return exitCode;
}

void WarnOfLogin(const QString& warning, const Arguments& given) {
    if (!given.isQuiet) {
        Warn({"login", warning}, given.Errors());
    }
}

ExitCode AddFolder(const Arguments& given, Output& output) {
    const input::Application application;
    SyncedFolder folder = GivenFolder(given);
    const QString host = folder.location.baseUrl.host();
    folders::RequireAddable(folder);
    const FoundCredentials login = input::FindCredentialsForAgent(folder.user, host);
    bool isThere = true;
    const bool isGiven = !login.areKept && !login.credentials.isNull();
    if (isGiven) {
        folder.user = login.credentials.user();
    }
    bool isUnasked = false;
    if (!given.isUntried) {
        ServiceConnection connection(folder.location.baseUrl, login.credentials, given.Connecting());
        try {
            isThere = IsThere(connection, folder.location);
        } catch (const std::exception& e) {
            return ComplainOfService(e, connection, folder, login, given);
        }
        isUnasked = isGiven && input::AsksForNoPassword(folder.location, given.Connecting());
    }
    const bool isMade = mkdir(folder.directory.toUtf8().constData(), 0777) == 0;
    if (!isMade && errno != EEXIST) {
        throw UsageError(QStringLiteral("%1: %2").arg(folder.directory, QString::fromLocal8Bit(std::strerror(errno))));
    }
    try {
        folders::AddToFoldersFile(folder, [&] {
            if (isGiven && !isUnasked) {
                user::Passwords().Keep(host, folder.user, login.credentials.password());
            }
        });
    } catch (...) {
        if (isMade) {
            rmdir(folder.directory.toUtf8().constData());
        }
        throw;
    }
    if (given.isJson) {
        output.Write(QByteArray::fromStdString(SyncedFolderJson(folder).dump()) + '\n');
    } else {
        output.Write(output.Shown(folder.directory) + " is kept in step with " + output.Shown(folder.url) +
                     (isThere ? "\n" : ", which is made there\n"));
    }
    if (!folder.user.isEmpty() && login.credentials.isNull()) {
        WarnOfLogin(QStringLiteral("No password of %1 is kept, and there is no terminal to ask at; \"%2\" keeps one.")
                        .arg(folder.user, LoginLine(QStringLiteral("login"), folder.user, folder)),
                    given);
    }
    if (isUnasked) {
        WarnOfLogin(
            QStringLiteral("%1 asks for no password here, so this one could not be tried, and is not kept; "
                           "\"%2\" keeps it.")
                .arg(folder.location.Server(), LoginLine(QStringLiteral("login --no-check"), folder.user, folder)),
            given);
    }
    TellAgent(given, true);
    return ExitCode::Done;
}

/// What is done with a folder of the file.
struct Change {
    void (*make)(const QString&);
    /// What is told of the folder then.
    const char* outcome;
    /// Whether it comes to nothing without an agent.
    bool needsAgent;
};

ExitCode ChangeFolder(const Change& change, const Arguments& given, Output& output) {
    const input::Application application;
    const QString directory = NamedDirectory(given.directory);
    change.make(directory);
    if (given.isJson) {
        output.Write(QByteArray::fromStdString(nlohmann::json{{"path", directory.toStdString()}}.dump()) + '\n');
    } else {
        output.Write(output.Shown(directory) + change.outcome + '\n');
    }
    TellAgent(given, change.needsAgent);
    return ExitCode::Done;
}

ExitCode ListFolders(const Arguments& given, Output& output) {
    const bool asJson = given.isJson;
    const folders::FoldersReading reading = folders::ReadFoldersFile();
    for (const QString& mistake : reading.mistakes) {
        Complain({"folders", QStringLiteral("%1: %2").arg(user::FoldersFilePath(), mistake)}, ExitCode::Refused,
                 given.Errors());
    }
    if (!reading.mistakes.isEmpty()) {
        return ExitCode::Refused;
    }
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const SyncedFolder& folder : reading.folders) {
        json.push_back(SyncedFolderJson(folder));
        if (!asJson) {
            output.Write(output.Shown(folder.directory) + "  " + output.Shown(folder.url) +
                         (folder.isPaused ? "  (paused)\n" : "\n"));
        }
    }
    if (asJson) {
        output.Write(QByteArray::fromStdString(json.dump(2)) + '\n');
    }
    return ExitCode::Done;
}

}  // namespace

void AddFoldersCommand(CommandRegistry& registry) {
    CLI::App* const folders =
        registry.AddGroup("folders", "Looks after the folders that the agent keeps in step.", FoldersFooter);
    Arguments& given = registry.Given();

    CLI::App* const add = registry.AddLocal(
        *folders, "add", "Keeps a local folder, made when it is missing, in step with one of a service.",
        [](const Arguments& arguments, Output& output) { return AddFolder(arguments, output); });
    CommandRegistry::AddText(add, "DIR", "The local folder", given.directory);
    CommandRegistry::AddText(add, "URL", "The folder, for example http://host/folder/", given.url);
    add->add_option("-u,--user", given.user, "Name to log in with")->type_name("USER");
    add->add_option("--ca-file", given.caFile, "Trust the PEM certificates in FILE in place of the system's")
        ->type_name("FILE")
        ->check(CLI::ExistingFile);
    add->add_option("--max-delete", given.maxDelete,
                    "Delete nothing when it would be more than N files, or N% of them (half of ten and more, and never "
                    "all, unless given)")
        ->type_name("N");
    registry.AddFolderOptions(add);
    add->add_flag("--no-check", given.isUntried, "Add it without asking the service");

    registry.AddLocal(*folders, "list", "Lists them, a line each.",
                      [](const Arguments& arguments, Output& output) { return ListFolders(arguments, output); });

    const auto addChange = [&](const char* name, const char* description, const Change& change) {
        CLI::App* const command = registry.AddLocal(
            *folders, name, description,
            [change](const Arguments& arguments, Output& output) { return ChangeFolder(change, arguments, output); });
        CommandRegistry::AddText(command, "DIR", "The local folder, as list shows it", given.directory);
    };
    addChange("remove", "Keeps a folder no longer in step. Nothing in it is touched, here or there.",
              {&folders::RemoveFromFoldersFile, " is no longer kept in step", false});
    addChange("pause", "Leaves a folder alone until it is resumed.",
              {[](const QString& directory) { folders::PauseInFoldersFile(directory, true); }, " is paused", false});
    addChange("resume", "Goes on with a folder that was paused.",
              {[](const QString& directory) { folders::PauseInFoldersFile(directory, false); },
               " is kept in step again", true});
}

}  // namespace commands
}  // namespace ovsync
