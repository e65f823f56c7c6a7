#pragma once

#include "client/cli/input/Location.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync settings`: how synchronisation is tuned for the path at `location`, next to what the service publishes.
/// Throws what Connection::FetchSyncConfig throws.
void ShowSettings(library::ServiceConnection& connection, const input::Location& location, bool asJson,
                  output::Output& output);

}  // namespace commands
}  // namespace ovsync
