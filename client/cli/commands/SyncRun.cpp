#include "client/cli/commands/SyncRun.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>

#include "client/agent/AgentClient.h"
#include "client/agent/StatusServer.h"
#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/Application.h"
#include "client/cli/input/Interruption.h"
#include "client/cli/input/MakeAt.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/ServiceFolderAt.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/SyncOutput.h"
#include "client/store/FileConfigManager.h"
#include "client/store/FolderBusy.h"
#include "client/sync/local/LocalTree.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace commands {

using agent::AgentClient;
using input::AbsolutePath;
using input::Interruption;
using input::Location;
using input::Refusal;
using input::SyncArguments;
using input::UsageError;
using library::ServiceConnection;
using output::ErrorText;
using output::ExitCode;
using output::Output;
using output::SyncOutput;
using report::SyncOutcome;
using store::RecordDatabase;

namespace {

const std::chrono::milliseconds TurnInterval(50);
const std::chrono::seconds PatienceWithPass(10);

/// `directory` is what was typed for `root`.
void RequireFolder(const QString& directory, const QString& root, bool isToBeWritten) {
    if (!QFileInfo(root).isDir()) {
        throw UsageError(QStringLiteral("\"%1\" is not a folder").arg(directory));
    }
    const int permissions = isToBeWritten ? R_OK | W_OK | X_OK : R_OK | X_OK;
    if (access(root.toUtf8().constData(), permissions) != 0) {
        throw Refusal(QStringLiteral("the folder \"%1\" cannot be %2: %3")
                          .arg(directory, isToBeWritten ? QStringLiteral("written") : QStringLiteral("read"),
                               QString::fromLocal8Bit(std::strerror(errno))));
    }
}

/// Waits a little for the agent, which is done with most passes at once.
std::shared_ptr<RecordDatabase> OpenRecords(const QString& root, RecordDatabase::Access access) {
    for (auto waited = TurnInterval;; waited += TurnInterval) {
        try {
            return std::make_shared<RecordDatabase>(root, access);
        } catch (const store::FolderBusy&) {
            if (waited > PatienceWithPass || Interruption::IsRequested() || !AgentClient::IsRunning()) {
                throw;
            }
        }
        std::this_thread::sleep_for(TurnInterval);
    }
}

/// What the agent shows as left to somebody may be settled.
void HaveAgentLook(const QString& root) {
    if (AgentClient::IsRunning()) {
        const input::Application application;
        [[maybe_unused]] const bool isTold = AgentClient().Send(agent::StatusServer::LookRequest(root));
    }
}

/// Whether nothing is there, but a folder that it could lie in.
bool IsMissing(const QString& directory) {
    const QFileInfo place(QDir::cleanPath(directory));
    return !place.exists() && !place.isSymLink() && QFileInfo(place.path()).isDir();
}

SyncOutput::Format FormatOf(const SyncArguments& arguments) {
    if (arguments.errors.isJson) {
        return SyncOutput::Format::Json;
    }
    if (arguments.isQuiet) {
        return SyncOutput::Format::Quiet;
    }
    return isatty(STDERR_FILENO) == 1 ? SyncOutput::Format::Bar : SyncOutput::Format::Lines;
}

ExitCode ExitCodeOf(SyncOutcome outcome) {
    switch (outcome) {
        case SyncOutcome::InStep:
            return ExitCode::Done;
        case SyncOutcome::LeftSome:
            return ExitCode::Refused;
        case SyncOutcome::Failed:
            return ExitCode::Unreachable;
        case SyncOutcome::Cancelled:
            return ExitCode::Interrupted;
    }
    return ExitCode::Unreachable;
}

/// The folder is let go of when it returns.
ExitCode RunPassIn(const QString& root, ServiceConnection& connection, const Location& location,
                   const SyncArguments& arguments, Output& output,
                   const std::function<SyncOutcome(pass::SyncPass&)>& pass) {
    const Interruption interruption;
    pass::SyncOptions options;
    options.deletes = arguments.deletes;
    options.conflicts = arguments.conflicts;
    options.isDryRun = arguments.isDryRun;
    options.transfers = arguments.transfers;
    options.isStrict = arguments.isStrict;
    options.isForced = arguments.isForced;
    options.deletionLimit = arguments.deletionLimit;
    options.daysKept = arguments.daysKept;
    options.exclusion = arguments.excluded;
    options.isStopped = &Interruption::IsRequested();

    local::LocalTree tree(root);
    const auto records =
        OpenRecords(root, arguments.isDryRun ? RecordDatabase::Access::Try : RecordDatabase::Access::Change);

    pass::ServiceFolder service = input::ServiceFolderAt(connection, location, root);
    service.caFile = arguments.caFile;
    const auto updater =
        connection.NewUpdater(std::make_shared<store::FileConfigManager>(records, root, service.folder.serverKey));
    service.updater = updater.get();

    ErrorText::Context context;
    context.server = location.Server();
    context.path = location.serverPath;
    context.thing = QStringLiteral("file or folder");
    context.isWriting = arguments.isPush;
    context.lastAnswer = [&connection] { return connection.LastAnswer(); };
    SyncOutput observer(output, FormatOf(arguments), arguments.isDryRun, ErrorText(context), arguments.errors.isVerbose,
                        report::WaitingDeletions(arguments.deletionLimit.IsRead()));
    pass::SyncPass common(service, tree, *records, options, observer);
    try {
        const SyncOutcome outcome = pass(common);
        observer.Summarise(outcome);
        return ExitCodeOf(outcome);
    } catch (const sync::http::HttpException& error) {
        observer.Summarise(SyncOutcome::Failed);
        // So some servers answer where the URL of a file is to be listed.
        if (error.StatusCode() == wire::HttpStatus::BadRequest && input::IsFile(connection, location)) {
            throw pass::WrongFolder::OfFile(location.serverPath);
        }
        throw;
    } catch (...) {
        observer.Summarise(SyncOutcome::Failed);
        throw;
    }
}

}  // namespace

ExitCode RunPass(ServiceConnection& connection, const Location& location, const SyncArguments& arguments,
                 Output& output, const std::function<SyncOutcome(pass::SyncPass&)>& pass) {
    const QString root = AbsolutePath(arguments.directory);
    input::RequireSyncable(arguments.directory);
    RequireFolder(arguments.directory, root, !arguments.isDryRun);
    const ExitCode exitCode = RunPassIn(root, connection, location, arguments, output, pass);
    if (!arguments.isDryRun) {
        HaveAgentLook(root);
    }
    return exitCode;
}

ExitCode RunPassMakingFolder(ServiceConnection& connection, const Location& location, const SyncArguments& arguments,
                             Output& output, const char* command,
                             const std::function<SyncOutcome(pass::SyncPass&)>& pass) {
    SyncArguments used = arguments;
    std::optional<QTemporaryDir> empty;
    if (IsMissing(used.directory)) {
        input::RequireSyncable(used.directory);
        // So that a wrong URL leaves nothing behind.
        FindFolder(connection, location, command);
        if (arguments.isDryRun) {
            used.directory = empty.emplace().path();
        } else if (mkdir(used.directory.toUtf8().constData(), 0777) != 0) {
            throw UsageError(QStringLiteral("the folder \"%1\" cannot be made: %2")
                                 .arg(used.directory, QString::fromLocal8Bit(std::strerror(errno))));
        }
    }
    return RunPass(connection, location, used, output, pass);
}

}  // namespace commands
}  // namespace ovsync
