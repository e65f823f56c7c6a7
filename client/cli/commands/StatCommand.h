#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync stat`: what the service knows of the folder or the file at `location`. Date, resource id and privileges of a
/// folder are told by the listing of the one above; when that fails they are left out, and standard error says why.
/// Throws what the library and the transaction with the service throw.
void AddStatCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
