#include "client/requests/AccountConnections.h"

namespace ovsync {
namespace requests {

using wire::ConnectionSettings;

AccountConnections::AccountConnections(const ConnectionSettings& settings) : _settings(settings) {}

std::shared_ptr<AccountConnection> AccountConnections::Of(
    int serverId, sync::interf::factory::IRequestAuthenticatorFactory& authenticators) {
    std::shared_ptr<AccountConnection>& session = _sessions[serverId];
    if (!session) {
        session = std::make_shared<AccountConnection>(_settings, authenticators.CreateAuthenticator(serverId));
    }
    return session;
}

}  // namespace requests
}  // namespace ovsync
