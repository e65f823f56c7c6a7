#pragma once

#include <QVector>

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"
#include "client/sync/local/Exclusion.h"

namespace ovsync {
namespace commands {

/// Takes what is excluded out of what the library listed below `location`, and gives them their true names
/// and sizes.
void PrepareEntries(const library::ServiceConnection& connection, const input::Location& location,
                    const local::Exclusion& excluded, QVector<sync::config::FolderConfiguration>& folders,
                    QVector<sync::config::FileConfiguration>& files);

}  // namespace commands
}  // namespace ovsync
