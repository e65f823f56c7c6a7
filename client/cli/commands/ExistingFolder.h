#pragma once

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// What the service knows of the folder at `location`. Throws UsageError when that is a file, which `command` does not
/// work on, HttpException of status 404 when there is nothing, and what the library throws.
sync::config::FolderConfiguration FindFolder(library::ServiceConnection& connection, const input::Location& location,
                                             const char* command);

/// Throws the HttpException of status 404 that says that there is no folder at `location`.
[[noreturn]] void ThrowNoSuchFolder(const input::Location& location);

}  // namespace commands
}  // namespace ovsync
