#pragma once

#include "client/cli/Connection.h"

namespace ovsync {
namespace cli {

/// What the service knows of the folder at `location`. Throws UsageError when that is a file, which `command` does not
/// work on, HttpException of status 404 when there is nothing, and what the library throws.
sync::config::FolderConfiguration FindFolder(Connection& connection, const Location& location, const char* command);

}  // namespace cli
}  // namespace ovsync
