#include "dvsync/SyncService.h"

#include <QDir>
#include <string>

#include "dvsync/ModuleDirectory.h"
#include "dvsync/Utf16.h"
#include "dvsync/platform/ProcessSearch.h"
#include "host/core/QtCompat.h"
#include "host/core/SyncAppName.h"
#include "host/core/TimedCache.h"

namespace sync {
namespace dv {
namespace dvsync {

namespace {

const int TimeLimitInMilliseconds = 1000;

core::TimedCache<bool> serviceIsRunning(
    [] { return IsDrovaneSynchronizationServiceRunning(QLatin1String("OvSync.exe")); }, TimeLimitInMilliseconds);

}  // namespace

bool IsDrovaneSynchronizationServiceRunning(QString processName) {
    return platform::AnotherProcessIsRunning(
        [&](const std::u16string& name) { return FromUtf16(name).compare(processName, Qt::CaseInsensitive) == 0; });
}

bool CachedIsDrovaneSynchronizationServiceRunning(QString /*processName*/) {
    return serviceIsRunning.Get();
}

bool StartSyncService() {
    const QDir directory(GetModuleDirectory(QLatin1String("OvSyncCore")));
    const QString file = directory.absoluteFilePath(core::GetSyncAppName());
    return core::compat::StartDetached(QString(QLatin1String("\"%0\"")).arg(file));
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
