#pragma once

#include "client/cli/Connection.h"
#include "client/cli/ExitCode.h"
#include "client/cli/Output.h"
#include "client/cli/SyncArguments.h"

namespace ovsync {
namespace cli {

/// `ovsync pull`: brings a local folder in step with the one at `location`. Throws what RunPass throws.
ExitCode Pull(Connection& connection, const Location& location, const SyncArguments& arguments, Output& output);

}  // namespace cli
}  // namespace ovsync
