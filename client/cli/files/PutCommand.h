#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace files {

/// `ovsync put`: sends the file at `path` to `location`, or into it where that is a folder. A file that is there is
/// replaced, if it is still the version that was there right before; `isForced` replaces whatever is there. Afterwards
/// the service is asked what it has. Writes the file as JSON when `asJson`, and nothing otherwise.
///
/// Throws UsageError when `path` is a folder or the root is to be replaced, LocalError when the file cannot be read,
/// Refusal when somebody was quicker, when the file was written meanwhile and when nothing tells the service's versions
/// apart, and what the transaction with the service throws.
void AddPutCommand(commands::CommandRegistry& registry);

}  // namespace files
}  // namespace ovsync
