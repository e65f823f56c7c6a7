#pragma once

#include <QMap>
#include <memory>

#include "client/http/AccountSession.h"
#include "client/http/HttpSessionSettings.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace http {

/// One session for each account, for all that executes requests for it, so that they share its connections. Not
/// thread-safe.
class AccountSessions {
public:
    explicit AccountSessions(const HttpSessionSettings& settings = HttpSessionSettings());

    /// The session of the account `serverId`. Made by the first call, which asks `authenticators` for the credentials;
    /// later calls do not look at it.
    std::shared_ptr<AccountSession> Of(int serverId,
                                       sync::interf::factory::IRequestAuthenticatorFactory& authenticators);

private:
    const HttpSessionSettings _settings;
    QMap<int, std::shared_ptr<AccountSession>> _sessions;
};

}  // namespace http
}  // namespace ovsync
