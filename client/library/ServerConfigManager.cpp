#include "client/library/ServerConfigManager.h"

#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

using sync::config::ServerConfiguration;

ServerConfigManager::ServerConfigManager(const QMap<int, ServerConfiguration>& accounts) : _accounts(accounts) {}

ServerConfiguration ServerConfigManager::GetServerConfiguration(int serverId) {
    const auto account = _accounts.constFind(serverId);
    if (account == _accounts.constEnd()) {
        throw sync::core::SyncException(QStringLiteral("There is no server account with the id %1").arg(serverId));
    }
    return account.value();
}

}  // namespace library
}  // namespace ovsync
