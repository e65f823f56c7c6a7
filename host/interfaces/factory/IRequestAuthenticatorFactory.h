#pragma once

#include <QAuthenticator>
#include <QObject>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {
namespace factory {

/// Gives requests the credentials they need.
class OVSYNC_INTERFACES_EXPORT IRequestAuthenticatorFactory : public QObject {
    Q_OBJECT

public:
    /// The user and the password for an account; a null authenticator when there are none.
    virtual QAuthenticator CreateAuthenticator(int serverId) = 0;
};

}  // namespace factory
}  // namespace interf
}  // namespace sync
