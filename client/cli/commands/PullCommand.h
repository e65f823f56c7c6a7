#pragma once

#include "client/cli/input/Location.h"
#include "client/cli/input/SyncArguments.h"
#include "client/cli/output/ExitCode.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync pull`: brings a local folder in step with the one at `location`. Makes the local one when it is missing and
/// its parent is not. Throws what FindFolder and RunPass throw, and UsageError when the folder cannot be made.
output::ExitCode Pull(library::ServiceConnection& connection, const input::Location& location,
                      const input::SyncArguments& arguments, output::Output& output);

}  // namespace commands
}  // namespace ovsync
