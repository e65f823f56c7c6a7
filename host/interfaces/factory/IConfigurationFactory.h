#pragma once

#include <QObject>
#include <memory>

#include "host/core/OvSyncExport.h"
#include "host/interfaces/IFileConfigManager.h"
#include "host/interfaces/IServerConfigManager.h"

namespace sync {
namespace interf {
namespace factory {

/// Makes the sources of settings and records.
class OVSYNC_INTERFACES_EXPORT IConfigurationFactory : public QObject {
    Q_OBJECT

public:
    virtual std::shared_ptr<IServerConfigManager> CreateServerConfigManager() = 0;
    virtual std::shared_ptr<IFileConfigManager> CreateFileConfigManager() = 0;
};

}  // namespace factory
}  // namespace interf
}  // namespace sync
