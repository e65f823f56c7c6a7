#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync push`: brings the folder at `location` in step with a local one. Throws what RunPass throws.
void AddPushCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
