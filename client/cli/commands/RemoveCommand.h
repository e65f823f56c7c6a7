#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync rm`: removes the folder at `location` and all that lies in it. Writes the folder that was removed as JSON
/// when `asJson`, and nothing otherwise. Throws UsageError for the root and for a file, HttpException of status 404
/// when there is nothing, and what the library and the transaction with the service throw.
void AddRemoveCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
