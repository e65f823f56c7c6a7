#pragma once

#include "client/cli/input/Location.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync stat`: what the service knows of the folder or the file at `location`. Date, resource id and privileges of a
/// folder are told by the listing of the one above; when that fails they are left out, and standard error says why.
/// Throws what the library and the transaction with the service throw.
void ShowResource(library::ServiceConnection& connection, const input::Location& location, bool asJson,
                  output::Output& output);

}  // namespace commands
}  // namespace ovsync
