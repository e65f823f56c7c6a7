#pragma once

#include "client/cli/Connection.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync settings`: how synchronisation is tuned for the path at `location`, next to what the service publishes.
/// Throws what Connection::FetchSyncConfig throws.
void ShowSettings(Connection& connection, const Location& location, bool asJson, Output& output);

}  // namespace cli
}  // namespace ovsync
