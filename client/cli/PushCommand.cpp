#include "client/cli/PushCommand.h"

#include "client/cli/SyncRun.h"
#include "client/sync/PushPass.h"

namespace ovsync {
namespace cli {

ExitCode Push(Connection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    return RunPass(connection, location, arguments, output,
                   [](syncing::PassContext& context) { return syncing::PushPass(context).Run(); });
}

}  // namespace cli
}  // namespace ovsync
