#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync mkdir`: creates the folder at `location`, with `withParents` every folder that is missing above it too. It
/// is no error when the folder is there already. Writes the folder as JSON when `asJson`, and nothing otherwise. Throws
/// UsageError for the root, HttpException of status 404 when the folder above it is missing, and what the library and
/// the transaction with the service throw.
void AddMakeFolderCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
