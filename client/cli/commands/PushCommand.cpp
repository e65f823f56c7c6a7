#include "client/cli/commands/PushCommand.h"

#include "client/cli/commands/SyncRun.h"
#include "client/sync/push/PushPass.h"

namespace ovsync {
namespace commands {

using input::Location;
using input::SyncArguments;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;

ExitCode Push(ServiceConnection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    return RunPass(connection, location, arguments, output,
                   [](pass::PassContext& context) { return push::PushPass(context).Run(); });
}

}  // namespace commands
}  // namespace ovsync
