#pragma once

#include "client/cli/input/Connection.h"
#include "client/cli/input/SyncArguments.h"
#include "client/cli/output/ExitCode.h"
#include "client/cli/output/Output.h"

namespace ovsync {
namespace commands {

/// `ovsync push`: brings the folder at `location` in step with a local one. Throws what RunPass throws.
output::ExitCode Push(input::Connection& connection, const input::Location& location,
                      const input::SyncArguments& arguments, output::Output& output);

}  // namespace commands
}  // namespace ovsync
