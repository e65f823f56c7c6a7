#pragma once

#include <QString>

namespace ovsync {
namespace offline {

/// The absolute path of the synced folder at `directory`. Throws UsageError when it is none. Thread-safe.
QString SyncedFolder(const QString& directory);

}  // namespace offline
}  // namespace ovsync
