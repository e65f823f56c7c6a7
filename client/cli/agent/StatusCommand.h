#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync status`: what the agent has to say of each folder, once or whenever it changed. Refused when there is no
/// agent, or something is left to somebody.
void AddStatusCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
