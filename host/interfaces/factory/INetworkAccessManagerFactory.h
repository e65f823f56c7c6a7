#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <memory>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {
namespace factory {

/// Makes network access managers that know the client's proxies and credentials.
class OVSYNC_INTERFACES_EXPORT INetworkAccessManagerFactory : public QObject {
    Q_OBJECT

public:
    /// A new manager, owned by the caller and living in the caller's thread.
    virtual std::shared_ptr<QNetworkAccessManager> CreateNetworkAccessManager() = 0;
};

}  // namespace factory
}  // namespace interf
}  // namespace sync
