#pragma once

#include "client/cli/Connection.h"
#include "client/cli/ExitCode.h"
#include "client/cli/Output.h"
#include "client/cli/SyncArguments.h"

namespace ovsync {
namespace cli {

/// `ovsync push`: brings the folder at `location` in step with a local one. Throws what RunPass throws.
ExitCode Push(Connection& connection, const Location& location, const SyncArguments& arguments, Output& output);

}  // namespace cli
}  // namespace ovsync
