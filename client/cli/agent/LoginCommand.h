#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync login`: keeps a password for later, in the keyring of the desktop or in ~/.netrc, and says where. An agent
/// that runs tries again with it.
void AddLoginCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
