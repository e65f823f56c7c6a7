#pragma once

#include <QMap>
#include <memory>

#include "client/requests/AccountConnection.h"
#include "client/wire/ConnectionSettings.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace requests {

/// One session for each account, for all that executes requests for it, so that they share its connections. Not
/// thread-safe.
class AccountConnections {
public:
    explicit AccountConnections(const wire::ConnectionSettings& settings = wire::ConnectionSettings());

    /// The session of the account `serverId`. Made by the first call, which asks `authenticators` for the credentials;
    /// later calls do not look at it.
    std::shared_ptr<AccountConnection> Of(int serverId,
                                          sync::interf::factory::IRequestAuthenticatorFactory& authenticators);

private:
    const wire::ConnectionSettings _settings;
    QMap<int, std::shared_ptr<AccountConnection>> _sessions;
};

}  // namespace requests
}  // namespace ovsync
