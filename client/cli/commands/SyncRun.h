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

}  // namespace commands
}  // namespace ovsync
