#pragma once

#include <QString>

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"
#include "client/sync/pass/ServiceFolder.h"

namespace ovsync {
namespace input {

/// The service's side of a pass over the local folder `root`, which is an absolute path; without an updater.
pass::ServiceFolder ServiceFolderAt(library::ServiceConnection& connection, const Location& location,
                                    const QString& root);

}  // namespace input
}  // namespace ovsync
