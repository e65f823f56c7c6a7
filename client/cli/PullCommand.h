#pragma once

#include "client/cli/Connection.h"
#include "client/cli/ExitCode.h"
#include "client/cli/Output.h"
#include "client/cli/SyncArguments.h"

namespace ovsync {
namespace cli {

/// `ovsync pull`: brings a local folder in step with the one at `location`. Makes the local one when it is missing and
/// its parent is not. Throws what FindFolder and RunPass throw, and UsageError when the folder cannot be made.
ExitCode Pull(Connection& connection, const Location& location, const SyncArguments& arguments, Output& output);

}  // namespace cli
}  // namespace ovsync
