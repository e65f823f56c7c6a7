#pragma once

#include <QMap>
#include <memory>

#include "client/requests/AccountSession.h"
#include "client/wire/HttpSessionSettings.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace requests {

/// One session for each account, for all that executes requests for it, so that they share its connections. Not
/// thread-safe.
class AccountSessions {
public:
    explicit AccountSessions(const wire::HttpSessionSettings& settings = wire::HttpSessionSettings());

    /// The session of the account `serverId`. Made by the first call, which asks `authenticators` for the credentials;
    /// later calls do not look at it.
    std::shared_ptr<AccountSession> Of(int serverId,
                                       sync::interf::factory::IRequestAuthenticatorFactory& authenticators);

private:
    const wire::HttpSessionSettings _settings;
    QMap<int, std::shared_ptr<AccountSession>> _sessions;
};

}  // namespace requests
}  // namespace ovsync
