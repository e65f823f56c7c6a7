#pragma once

#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace core {

/// The file name of the sync application's executable, without a directory. Thread-safe.
OVSYNC_CORE_EXPORT QString GetSyncAppName();

}  // namespace core
}  // namespace sync
