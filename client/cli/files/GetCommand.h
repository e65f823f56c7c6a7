#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace files {

/// `ovsync get`: fetches the file at `location` to `path`, or into the folder of that name, or to standard output when
/// that is "-"; without a path into the current folder. It is checked against the size and, where the service has one,
/// the MD5. A file that is there is replaced when all of it came, and never before; what came of a download that broke
/// off is kept for the next one. Writes the path, the size and the MD5 as JSON when `asJson`, and nothing otherwise.
/// `ovsync cat`: the same to standard output.
///
/// Throws UsageError when `location` is a folder, HttpException of status 404 when there is nothing, LocalError when
/// the file cannot be written, and what the transaction with the service throws.
void AddGetCommand(commands::CommandRegistry& registry);
void AddCatCommand(commands::CommandRegistry& registry);

}  // namespace files
}  // namespace ovsync
