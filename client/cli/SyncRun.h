#pragma once

#include <functional>

#include "client/cli/Connection.h"
#include "client/cli/ExitCode.h"
#include "client/cli/Output.h"
#include "client/cli/SyncArguments.h"
#include "client/sync/PassContext.h"

namespace ovsync {
namespace cli {

/// Runs `pass` between the folder at `location` and the local one, and tells what it does. Throws UsageError when there
/// is no such local folder, and what the pass throws.
ExitCode RunPass(Connection& connection, const Location& location, const SyncArguments& arguments, Output& output,
                 const std::function<syncing::SyncOutcome(syncing::PassContext&)>& pass);

}  // namespace cli
}  // namespace ovsync
