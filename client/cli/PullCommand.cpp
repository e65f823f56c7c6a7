#include "client/cli/PullCommand.h"

#include "client/cli/SyncRun.h"
#include "client/sync/PullPass.h"

namespace ovsync {
namespace cli {

ExitCode Pull(Connection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    return RunPass(connection, location, arguments, output,
                   [](syncing::PassContext& context) { return syncing::PullPass(context).Run(); });
}

}  // namespace cli
}  // namespace ovsync
