#pragma once

#include "client/cli/Location.h"

namespace ovsync {
namespace cli {

/// Throws the HttpException of status 404 that says that there is no folder at `location`.
[[noreturn]] void ThrowNoSuchFolder(const Location& location);

}  // namespace cli
}  // namespace ovsync
