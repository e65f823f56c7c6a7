#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync folders add|list|remove|pause|resume`: the folders that the agent keeps in step. An agent that runs reads
/// them anew after each change.
void AddFoldersCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
