#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync agent status`: whether the sync application runs. Done when it does, Refused when it does not.
/// `ovsync agent start`: starts the sync application unless it runs already, waits a little until it can be seen, and
/// goes on as ShowAgent.
void AddAgentCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
