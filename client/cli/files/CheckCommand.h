#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace files {

/// `ovsync check`: compares the local folder `directory` with the one at `location`, and changes nothing. Refused when
/// they differ or something could not be compared; a line says what, or an object on a line when `asJson`. Throws
/// UsageError when there is no such local folder, and what CheckPass::Run throws.
void AddCheckCommand(commands::CommandRegistry& registry);

}  // namespace files
}  // namespace ovsync
