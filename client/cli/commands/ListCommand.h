#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace commands {

/// `ovsync ls`: the sub-folders and the files of the folder at `location`, in one name order. Nothing is written unless
/// the listing is whole. Throws what the library and the transaction with the service throw, and HttpException of
/// status 404 when there is no such folder.
void AddListCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
