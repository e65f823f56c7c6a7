#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync agent status|start|stop|run|enable`: the application that the library starts. Done when it runs then, with
/// stop when it does not.
void AddAgentCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
