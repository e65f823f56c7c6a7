#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace files {

/// `ovsync cp`: copies the file or, with all that lies in it, the folder at `from`, which `connection` is for, to `to`.
/// `ovsync mv`: moves it. A file goes into `to` where that is a folder. Nothing is replaced, but a file by a file when
/// `isForced`. Each writes both paths as JSON when `asJson`, and nothing otherwise.
///
/// Throws UsageError when the two are not on one server and when either is the root, HttpException of status 404 when
/// there is nothing at `from`, Refusal when something is at `to`, and what the library and the transaction with the
/// service throw.
void AddCopyCommand(commands::CommandRegistry& registry);
void AddMoveCommand(commands::CommandRegistry& registry);

}  // namespace files
}  // namespace ovsync
