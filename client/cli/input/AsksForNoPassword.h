#pragma once

#include "client/cli/input/Location.h"
#include "client/wire/ConnectionSettings.h"

namespace ovsync {
namespace input {

/// Whether the service says nothing to whoever has no password, and so nothing to a wrong one.
bool AsksForNoPassword(const Location& location, const wire::ConnectionSettings& settings);

}  // namespace input
}  // namespace ovsync
