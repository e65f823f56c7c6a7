#include "client/requests/AccountSessions.h"

namespace ovsync {
namespace requests {

using wire::HttpSessionSettings;

AccountSessions::AccountSessions(const HttpSessionSettings& settings) : _settings(settings) {}

std::shared_ptr<AccountSession> AccountSessions::Of(
    int serverId, sync::interf::factory::IRequestAuthenticatorFactory& authenticators) {
    std::shared_ptr<AccountSession>& session = _sessions[serverId];
    if (!session) {
        session = std::make_shared<AccountSession>(_settings, authenticators.CreateAuthenticator(serverId));
    }
    return session;
}

}  // namespace requests
}  // namespace ovsync
