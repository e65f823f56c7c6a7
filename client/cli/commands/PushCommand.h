#pragma once

#include "client/cli/input/Location.h"
#include "client/cli/input/SyncArguments.h"
#include "client/cli/output/ExitCode.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync push`: brings the folder at `location` in step with a local one. Throws what RunPass throws.
output::ExitCode Push(library::ServiceConnection& connection, const input::Location& location,
                      const input::SyncArguments& arguments, output::Output& output);

}  // namespace commands
}  // namespace ovsync
