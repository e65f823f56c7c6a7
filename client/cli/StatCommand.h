#pragma once

#include "client/cli/Connection.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync stat`: what the service knows of the folder or the file at `location`. Throws what the library and the
/// exchange with the service throw.
void ShowResource(Connection& connection, const Location& location, bool asJson, Output& output);

}  // namespace cli
}  // namespace ovsync
