#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace offline {

/// `ovsync conflicts`: the files of which the service's version lies beside them, and how each of these conflicts ends.
/// Throws UsageError when the directory is no synced folder, and StoreError when a pass has it open.
void AddConflictsCommand(commands::CommandRegistry& registry);

}  // namespace offline
}  // namespace ovsync
