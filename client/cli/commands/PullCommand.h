#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync pull`: brings a local folder in step with the one at `location`. Makes the local one when it is missing and
/// its parent is not. Throws what FindFolder and RunPass throw, and UsageError when the folder cannot be made.
void AddPullCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
