#pragma once

#include <QString>

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"
#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace input {

/// The service's side of a pass over the local folder `root`, which is an absolute path; without an updater.
/// `transfers` connections for content share the bandwidth.
pass::ServiceFolder ServiceFolderAt(library::ServiceConnection& connection, const Location& location,
                                    const QString& root, int transfers);

}  // namespace input
}  // namespace ovsync
