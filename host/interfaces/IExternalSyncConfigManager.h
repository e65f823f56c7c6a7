#pragma once

#include <QObject>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace dv {
namespace dvsync {
class ExternalSyncConfig;
}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace sync {
namespace interf {

/// The configuration that a service publishes for its clients. Needs a thread with a Qt event dispatcher; not
/// re-entrant.
class OVSYNC_INTERFACES_EXPORT IExternalSyncConfigManager : public QObject {
    Q_OBJECT

public:
    /// Fetches the configuration anew. Never throws: a failure gives the defaults.
    virtual sync::dv::dvsync::ExternalSyncConfig GetExternalSyncConfig() = 0;
};

}  // namespace interf
}  // namespace sync
