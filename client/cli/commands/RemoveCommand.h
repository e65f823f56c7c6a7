#pragma once

#include "client/cli/input/Location.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync rm`: removes the folder at `location` and all that lies in it. Writes the folder that was removed as JSON
/// when `asJson`, and nothing otherwise. Throws UsageError for the root and for a file, HttpException of status 404
/// when there is nothing, and what the library and the transaction with the service throw.
void RemoveFolder(library::ServiceConnection& connection, const input::Location& location, bool asJson,
                  output::Output& output);

}  // namespace commands
}  // namespace ovsync
