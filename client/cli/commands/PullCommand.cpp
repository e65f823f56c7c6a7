#include "client/cli/commands/PullCommand.h"

#include <CLI/CLI.hpp>

#include <sys/stat.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cerrno>
#include <cstring>
#include <optional>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/SyncRun.h"
#include "client/cli/input/UsageError.h"
#include "client/sync/pull/PullPass.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::SyncArguments;
using input::UsageError;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;

namespace {

/// Whether nothing is there, but a folder that it could lie in.
bool IsMissing(const QString& directory) {
    const QFileInfo place(QDir::cleanPath(directory));
    return !place.exists() && !place.isSymLink() && QFileInfo(place.path()).isDir();
}

ExitCode Pull(ServiceConnection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    SyncArguments used = arguments;
    std::optional<QTemporaryDir> empty;
    if (IsMissing(used.directory)) {
        if (arguments.isDryRun) {
            used.directory = empty.emplace().path();
        } else {
            // So that a wrong URL leaves nothing behind.
            FindFolder(connection, location, "pull");
            if (mkdir(used.directory.toUtf8().constData(), 0777) != 0) {
                throw UsageError(QStringLiteral("the folder \"%1\" cannot be made: %2")
                                     .arg(used.directory, QString::fromLocal8Bit(std::strerror(errno))));
            }
        }
    }
    return RunPass(connection, location, used, output, [](pass::SyncPass& pass) { return pull::PullPass(pass).Run(); });
}

}  // namespace

void AddPullCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddCommand("pull", "Brings a local folder in step with a folder of the service.",
                            [](ServiceConnection& connection, const Location& location, const Arguments& given,
                               Output& output) { return Pull(connection, location, given.Syncing(), output); });
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    CommandRegistry::AddText(command, "DIR", "The local folder, made when it is missing", registry.Given().directory);
    command->add_flag("--delete", registry.Given().deletes,
                      "Delete here what the service has deleted, unless it was changed here");
    command
        ->add_option("--max-delete", registry.Given().maxDelete,
                     "Delete nothing when it would be more than N files, or N% of them (half of ten and more, and "
                     "never all, unless given)")
        ->type_name("N");
    registry.AddPassOptions(command);
}

}  // namespace commands
}  // namespace ovsync
