#pragma once

#include "client/cli/output/ExitCode.h"
#include "client/cli/output/Output.h"

namespace ovsync {
namespace commands {

/// `ovsync agent status`: whether the sync application runs. Done when it does, Refused when it does not.
output::ExitCode ShowAgent(bool asJson, output::Output& output);

/// `ovsync agent start`: starts the sync application unless it runs already, waits a little until it can be seen, and
/// goes on as ShowAgent.
output::ExitCode StartAgent(bool asJson, output::Output& output);

}  // namespace commands
}  // namespace ovsync
