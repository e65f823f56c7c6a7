#include "client/cli/commands/PushCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/SyncRun.h"
#include "client/sync/push/PushPass.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::SyncArguments;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;

namespace {

ExitCode Push(ServiceConnection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    SyncArguments used = arguments;
    used.isPush = true;
    return RunPass(connection, location, used, output, [](pass::SyncPass& pass) { return push::PushPass(pass).Run(); });
}

}  // namespace

void AddPushCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddCommand("push", "Brings a folder of the service in step with a local folder.",
                            [](ServiceConnection& connection, const Location& location, const Arguments& given,
                               Output& output) { return Push(connection, location, given.Syncing(), output); });
    CommandRegistry::AddText(command, "DIR", "The local folder, which must be there", registry.Given().directory);
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    command->add_flag("-f,--force", registry.Given().isForced,
                      "Replace a file also where the server gives it neither an entity tag nor a date");
    command->add_flag("--delete", registry.Given().deletes,
                      "Delete on the service what was deleted here, unless it was changed there");
    registry.AddDeletionLimit(command);
    registry.AddPassOptions(command);
    registry.MarkAsWriting(command);
}

}  // namespace commands
}  // namespace ovsync
