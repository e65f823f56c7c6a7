#pragma once

#include <functional>

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace input {

/// Has `make` make something at `location`. Throws FolderMissing where that was refused because there is no folder for
/// it, and else what `make` throws.
void MakeAt(library::ServiceConnection& connection, const Location& location, const std::function<void()>& make);

/// Has `make` make a folder at `location`. Throws FolderMissing where that was refused because this, or what it is to
/// be in, is a file, and else what `make` throws.
void MakeFolderAt(library::ServiceConnection& connection, const Location& location, const std::function<void()>& make);

/// Whether `location` is known to be that of a file. Throws nothing that the service says.
bool IsFile(library::ServiceConnection& connection, const Location& location);

/// Throws FolderMissing when there is no folder that `location`, where there is nothing, could be in. One that the
/// service does not show counts as there.
void RequireFolderAbove(library::ServiceConnection& connection, const Location& location);

}  // namespace input
}  // namespace ovsync
