#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync mv`: moves the folder at `from`, which `connection` is for, to `to`, where nothing may be. Writes both paths
/// as JSON when `asJson`, and nothing otherwise. Throws UsageError when the two are not on one server, when either is
/// the root and when `from` is a file, HttpException of status 404 when there is nothing at `from`, and what the
/// library and the transaction with the service throw.
void AddMoveCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
