#pragma once

#include "client/cli/Connection.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync rm`: removes the folder at `location` and all that lies in it. Writes the folder that was removed as JSON
/// when `asJson`, and nothing otherwise. Throws UsageError for the root and for a file, HttpException of status 404
/// when there is nothing, and what the library and the exchange with the service throw.
void RemoveFolder(Connection& connection, const Location& location, bool asJson, Output& output);

}  // namespace cli
}  // namespace ovsync
