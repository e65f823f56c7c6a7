#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync mkdir`: creates the folder at `location`, with `withParents` every folder that is missing above it too. To
/// the service a folder that is there already is as good as a new one. Writes the folder as JSON when `asJson`, and
/// nothing otherwise. Throws UsageError for the root, HttpException of status 404 when the folder above it is missing,
/// and what the library and the transaction with the service throw.
void AddMakeFolderCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
