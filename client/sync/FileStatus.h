#pragma once

#include <sys/stat.h>

#include "client/sync/LocalEntry.h"

namespace ovsync {
namespace syncing {

/// What the system says of a file, as the passes see it.
LocalEntry EntryOf(const struct stat& status);

}  // namespace syncing
}  // namespace ovsync
