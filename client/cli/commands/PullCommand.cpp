#include "client/cli/commands/PullCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/SyncRun.h"
#include "client/sync/pull/PullPass.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::SyncArguments;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;

namespace {

ExitCode Pull(ServiceConnection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    return RunPassMakingFolder(connection, location, arguments, output, "pull",
                               [](pass::SyncPass& pass) { return pull::PullPass(pass).Run(); });
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
    registry.AddDeletionLimit(command);
    registry.AddPassOptions(command);
}

}  // namespace commands
}  // namespace ovsync
