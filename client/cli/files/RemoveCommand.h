#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace files {

/// `ovsync rm`: removes the file or the folder at `location`; a folder that has something in it only when
/// `isRecursive`. Writes what was removed as JSON when `asJson`, and nothing otherwise. Throws UsageError for the root,
/// Refusal for a folder that has something in it, HttpException of status 404 when there is nothing, and what the
/// library and the transaction with the service throw.
void AddRemoveCommand(commands::CommandRegistry& registry);

}  // namespace files
}  // namespace ovsync
