#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync tree`: everything below the folder at `location` that the library lists, by the paths relative to it, in one
/// order. With a valid `since` only if something changed since then. The service's time of the answer, which is what
/// the next `since` can be, and that nothing changed go to standard error, or into the JSON object that holds the
/// array.
///
/// Throws what the library and the transaction with the service throw, and HttpException of status 404 when there is no
/// such folder.
void AddTreeCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
