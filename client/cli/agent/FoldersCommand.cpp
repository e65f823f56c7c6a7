#include "client/cli/agent/FoldersCommand.h"

#include <CLI/CLI.hpp>

#include <sys/stat.h>

#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>

#include "client/agent/AgentClient.h"
#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/Application.h"
#include "client/cli/input/Credentials.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/Complaint.h"
#include "client/folders/FoldersFile.h"
#include "client/user/Places.h"

namespace ovsync {
namespace commands {

using folders::SyncedFolder;
using input::Arguments;
using input::Location;
using input::Refusal;
using input::SyncArguments;
using input::UsageError;
using output::Complain;
using output::ExitCode;
using output::Output;
using output::Warn;

namespace {

const char* const FoldersFooter =
    "Exit status: 0 done, 1 the folders file has a mistake or cannot be changed, 2 wrong usage.\n"
    "The folders stand in ovsync/folders.toml in $XDG_CONFIG_HOME, or in ~/.config.";

void TellAgent(const Arguments& given) {
    if (!agent::AgentClient().Send("reload") && !given.isQuiet) {
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
    folder.user = given.user.empty() ? folder.location.user : QString::fromStdString(given.user);
    if (!folder.location.user.isEmpty() && folder.location.user != folder.user) {
        throw UsageError(QStringLiteral("The URL names another user than -u does."));
    }
    folder.rules = given.rules;
    folder.deletionLimitText = QString::fromStdString(given.maxDelete.value_or(std::string()));
    folder.daysKept = arguments.daysKept;
    folder.transfers = arguments.transfers;
    if (!given.caFile.empty()) {
        folder.caFile = input::AbsolutePath(QString::fromStdString(given.caFile));
    }
    input::RequireSyncable(arguments.directory);
    const QFileInfo place(QDir::cleanPath(arguments.directory));
    if (!place.exists() && !place.isSymLink() && mkdir(place.filePath().toUtf8().constData(), 0777) != 0) {
        throw UsageError(
            QStringLiteral("%1: %2").arg(arguments.directory, QString::fromLocal8Bit(std::strerror(errno))));
    }
    if (!place.isDir()) {
        throw UsageError(QStringLiteral("%1 is no folder").arg(arguments.directory));
    }
    folder.directory = input::AbsolutePath(arguments.directory);
    return folder;
}

void AddFolder(const Arguments& given) {
    const input::Application application;
    const SyncedFolder folder = GivenFolder(given);
    folders::AddToFoldersFile(folder);
    if (!folder.user.isEmpty()) {
        if (!input::KeepPasswordUnlessKept(folder.user, folder.location.baseUrl.host()) && !given.isQuiet) {
            Warn({"login",
                  QStringLiteral("No password of %1 is kept, and there is no terminal to ask at; \"ovsync login "
                                 "-u %1 %2\" keeps one.")
                      .arg(folder.user, folder.location.baseUrl.toString())},
                 given.Errors());
        }
    }
    TellAgent(given);
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
        [](const Arguments& arguments, Output&) {
            AddFolder(arguments);
            return ExitCode::Done;
        });
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

    registry.AddLocal(*folders, "list", "Lists them, a line each.",
                      [](const Arguments& arguments, Output& output) { return ListFolders(arguments, output); });

    const auto addChange = [&](const char* name, const char* description, void (*change)(const QString&)) {
        CLI::App* const command =
            registry.AddLocal(*folders, name, description, [change](const Arguments& arguments, Output&) {
                const input::Application application;
                change(NamedDirectory(arguments.directory));
                TellAgent(arguments);
                return ExitCode::Done;
            });
        CommandRegistry::AddText(command, "DIR", "The local folder, as list shows it", given.directory);
    };
    addChange("remove", "Keeps a folder no longer in step. Nothing in it is touched, here or there.",
              &folders::RemoveFromFoldersFile);
    addChange("pause", "Leaves a folder alone until it is resumed.",
              [](const QString& directory) { folders::PauseInFoldersFile(directory, true); });
    addChange("resume", "Goes on with a folder that was paused.",
              [](const QString& directory) { folders::PauseInFoldersFile(directory, false); });
}

}  // namespace commands
}  // namespace ovsync
