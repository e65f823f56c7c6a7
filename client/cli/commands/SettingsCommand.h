#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync settings`: how synchronisation is tuned for the path at `location`, next to what the service publishes.
/// Throws what ServiceConnection::FetchSyncConfig throws.
void AddSettingsCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
