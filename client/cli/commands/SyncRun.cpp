#include "client/cli/commands/SyncRun.h"

#include <unistd.h>

#include <memory>

#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/GlobFilter.h"
#include "client/cli/input/Interruption.h"
#include "client/cli/input/ServiceFolderAt.h"
#include "client/cli/output/SyncOutput.h"
#include "client/store/FileConfigManager.h"
#include "client/sync/local/LocalTree.h"

namespace ovsync {
namespace commands {

using input::AbsolutePath;
using input::GlobFilter;
using input::Interruption;
using input::Location;
using input::SyncArguments;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;
using output::SyncOutput;
using report::SyncOutcome;
using store::RecordDatabase;

namespace {

SyncOutput::Format FormatOf(const SyncArguments& arguments) {
    if (arguments.isJson) {
        return SyncOutput::Format::Json;
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

}  // namespace

ExitCode RunPass(ServiceConnection& connection, const Location& location, const SyncArguments& arguments,
                 Output& output, const std::function<SyncOutcome(pass::SyncPass&)>& pass) {
    const Interruption interruption;
    const QString root = AbsolutePath(arguments.directory);

    pass::SyncOptions options;
    options.deletes = arguments.deletes;
    options.isDryRun = arguments.isDryRun;
    options.transfers = arguments.transfers;
    options.isStrict = arguments.isStrict;
    options.deletionLimit = arguments.deletionLimit;
    options.daysKept = arguments.daysKept;
    options.filter = std::make_shared<GlobFilter>(arguments.excluded);
    options.filterText = arguments.excluded.join(QLatin1Char('/'));
    options.isStopped = &Interruption::IsRequested();

    local::LocalTree tree(root);
    const auto records = std::make_shared<RecordDatabase>(
        root, arguments.isDryRun ? RecordDatabase::Access::Try : RecordDatabase::Access::Change);

    pass::ServiceFolder service = input::ServiceFolderAt(connection, location, root);
    const auto updater =
        connection.NewUpdater(std::make_shared<store::FileConfigManager>(records, root, service.folder.serverKey));
    service.updater = updater.get();

    SyncOutput observer(output, FormatOf(arguments), arguments.isDryRun);
    pass::SyncPass common(service, tree, *records, options, observer);
    try {
        const SyncOutcome outcome = pass(common);
        observer.Summarise(outcome);
        return ExitCodeOf(outcome);
    } catch (...) {
        observer.Summarise(SyncOutcome::Failed);
        throw;
    }
}

}  // namespace commands
}  // namespace ovsync
