#pragma once

#include <sys/stat.h>

#include "client/sync/local/LocalEntry.h"

namespace ovsync {
namespace local {

/// What the system says of a file, as the passes see it.
LocalEntry EntryOf(const struct stat& status);

}  // namespace local
}  // namespace ovsync
