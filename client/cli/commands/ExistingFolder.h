#pragma once

#include <functional>

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// What the service knows of the folder at `location`. Throws UsageError when that is a file, which `command` does not
/// work on, HttpException of status 404 when there is nothing, and what the library throws.
sync::config::FolderConfiguration FindFolder(library::ServiceConnection& connection, const input::Location& location,
                                             const char* command);

/// Has `make` make something at `location`. Throws FolderMissing where that was refused because there is no folder for
/// it, and else what `make` throws.
void MakeAt(library::ServiceConnection& connection, const input::Location& location, const std::function<void()>& make);

/// Throws FolderMissing when there is no folder that `location`, where there is nothing, could be in. One that the
/// service does not show counts as there.
void RequireFolderAbove(library::ServiceConnection& connection, const input::Location& location);

/// Throws the HttpException of status 404 that says that there is no folder at `location`.
[[noreturn]] void ThrowNoSuchFolder(const input::Location& location);

}  // namespace commands
}  // namespace ovsync
