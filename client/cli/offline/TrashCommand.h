#pragma once

#include "client/cli/commands/CommandRegistry.h"

namespace ovsync {
namespace offline {

/// Each of these throws UsageError when `directory` is no synced folder, LocalError when the trash cannot be read, and
/// those that change something StoreError when a pass has the folder open.
/// `ovsync trash list`: what lies in the trash, in order of time and path.
/// `ovsync trash restore`: brings the file that was at `path` to `to`, or else back to its place: that of the time
/// `from`, or else the newest. Throws UsageError when `from` is no time and when `to` is no path below the folder, and
/// Refusal when there is no such file and when something is in the way.
/// `ovsync trash empty`: removes what was put there more than `days` ago, or else all. Refused when something stayed,
/// of which it tells.
void AddTrashCommand(commands::CommandRegistry& registry);

}  // namespace offline
}  // namespace ovsync
