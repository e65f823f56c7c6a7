#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync du`: how many files there are in the tree of the folder at `location` and how many bytes they have, without
/// those that are excluded; on demand also of each folder below. Throws UsageError for a pattern that is not valid,
/// HttpException of status 404 when there is no such folder, and what the library and the transaction with the service
/// throw.
void AddSizeCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
