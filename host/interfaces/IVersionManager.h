#pragma once

#include <QObject>
#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// The versions of the application, here and on the service. The order of the operations is part of the contract.
class OVSYNC_INTERFACES_EXPORT IVersionManager : public QObject {
    Q_OBJECT

public:
    virtual QString GetLocalAppVersion() = 0;

    /// Asks the service at every call.
    virtual QString GetMostCurrentAppVersion() = 0;

    /// Asks the service at every call.
    virtual QString GetAppInstallerUrl() = 0;
};

}  // namespace interf
}  // namespace sync
