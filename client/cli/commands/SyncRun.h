#pragma once

#include <functional>

#include "client/cli/input/Location.h"
#include "client/cli/input/SyncArguments.h"
#include "client/cli/output/ExitCode.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"
#include "client/sync/pass/SyncPass.h"

namespace ovsync {
namespace commands {

/// Runs `pass` between the folder at `location` and the local one, and tells what it does. Throws UsageError when there
/// is no such local folder, and what the pass throws.
output::ExitCode RunPass(library::ServiceConnection& connection, const input::Location& location,
                         const input::SyncArguments& arguments, output::Output& output,
                         const std::function<report::SyncOutcome(pass::SyncPass&)>& pass);

/// The same, and makes the local folder where it is missing, but not those above it. Throws UsageError when it cannot
/// be made, and HttpException when there is no folder at `location`. `command` is what the user typed.
output::ExitCode RunPassMakingFolder(library::ServiceConnection& connection, const input::Location& location,
                                     const input::SyncArguments& arguments, output::Output& output, const char* command,
                                     const std::function<report::SyncOutcome(pass::SyncPass&)>& pass);

}  // namespace commands
}  // namespace ovsync
