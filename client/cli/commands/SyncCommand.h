#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync sync`: brings the local folder and the service's folder in step with each other. Throws what
/// TwoWayPass::Run throws, and UsageError when the local folder cannot be made.
void AddSyncCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
