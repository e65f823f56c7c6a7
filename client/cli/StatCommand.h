#pragma once

#include "client/cli/Connection.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync stat`: what the service knows of the folder or the file at `location`. Date, resource id and privileges of a
/// folder are told by the listing of the one above; when that fails they are left out, and standard error says why.
/// Throws what the library and the exchange with the service throw.
void ShowResource(Connection& connection, const Location& location, bool asJson, Output& output);

}  // namespace cli
}  // namespace ovsync
