#pragma once

#include <QObject>
#include <QUrl>
#include <memory>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {
namespace dv {

/// Where the Drovane service keeps what is not a file or a folder. The order of the operations is part of the contract.
class OVSYNC_INTERFACES_EXPORT IDrovaneHttp : public QObject {
    Q_OBJECT

public:
    /// The address of the service itself.
    virtual std::shared_ptr<QUrl> GetServiceUrl() = 0;

    /// The address of the service's sync-configuration document.
    virtual std::shared_ptr<QUrl> GetSyncConfigUrl() = 0;
};

}  // namespace dv
}  // namespace interf
}  // namespace sync
