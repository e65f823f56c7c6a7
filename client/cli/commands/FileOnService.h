#pragma once

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// What is at `location`. Throws HttpException of status 404 when there is nothing, and what ServiceConnection::Find
/// throws.
library::FoundResource FindResource(library::ServiceConnection& connection, const input::Location& location);

/// The file at `location`. Throws UsageError when that is a folder, of which `advice` says what to do with it, and as
/// above.
sync::config::FileConfiguration FindFile(library::ServiceConnection& connection, const input::Location& location,
                                         const char* advice);

/// Where a file named `name` goes that is to be put at `location`: into it, where that is a folder or typed as one,
/// else to it. Throws as ServiceConnection::Find does.
input::Location TargetOf(library::ServiceConnection& connection, const input::Location& location, const QString& name);

}  // namespace commands
}  // namespace ovsync
