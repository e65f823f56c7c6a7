#pragma once

#include "client/cli/ExitCode.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync agent status`: whether the sync application runs. Done when it does, Refused when it does not.
ExitCode ShowAgent(bool asJson, Output& output);

/// `ovsync agent start`: starts the sync application unless it runs already, waits a little until it can be seen, and
/// goes on as ShowAgent.
ExitCode StartAgent(bool asJson, Output& output);

}  // namespace cli
}  // namespace ovsync
