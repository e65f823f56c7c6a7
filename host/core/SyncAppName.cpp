#include "host/core/SyncAppName.h"

namespace sync {
namespace core {

QString GetSyncAppName() {
    return QString(QLatin1String("OvSync.exe"));
}

}  // namespace core
}  // namespace sync
