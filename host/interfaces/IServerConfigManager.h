#pragma once

#include <QObject>

#include "host/configuration/ServerConfiguration.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// The settings of the server accounts.
class OVSYNC_INTERFACES_EXPORT IServerConfigManager : public QObject {
    Q_OBJECT

public:
    virtual config::ServerConfiguration GetServerConfiguration(int serverId) = 0;
};

}  // namespace interf
}  // namespace sync
