#pragma once

#include <QObject>
#include <memory>

#include "host/core/OvSyncExport.h"
#include "host/interfaces/IRemoteFileManager.h"

namespace sync {
namespace interf {
namespace factory {

/// Makes remote file managers.
class OVSYNC_INTERFACES_EXPORT IRemoteFileManagerFactory : public QObject {
    Q_OBJECT

public:
    virtual std::shared_ptr<IRemoteFileManager> CreateRemoteFileManager(int serverKey) = 0;
};

}  // namespace factory
}  // namespace interf
}  // namespace sync
