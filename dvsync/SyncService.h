#pragma once

#include <QString>

#include "dvsync/DvsyncExport.h"

/// The sync application of the host: a process of its own that the host finds and starts by these. None of them throws
/// when the system fails. Thread-safe.

namespace sync {
namespace dv {
namespace dvsync {

/// Whether a process other than this one runs whose executable has the base name `processName`, in any letter case.
/// Looks at the first 1024 processes; one that this user may not look at goes by the name "<unknown>".
DVSYNC_EXPORT bool IsDrovaneSynchronizationServiceRunning(QString processName);

/// Whether "OvSync.exe" runs, whatever `processName` is: the answer is kept for this process as a whole, and looked for
/// anew when two seconds or more have passed.
DVSYNC_EXPORT bool CachedIsDrovaneSynchronizationServiceRunning(QString processName);

/// Starts sync::core::GetSyncAppName() from the directory of the library OvSyncCore as a process that outlives this
/// one, and returns whether it started. Where OvSyncCore is not loaded as a library, from the current directory.
DVSYNC_EXPORT bool StartSyncService();

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
