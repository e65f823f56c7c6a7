#pragma once

#include <QMap>

#include "host/interfaces/IServerConfigManager.h"

namespace ovsync {
namespace library {

/// A fixed set of accounts. Thread-safe.
///
/// \code
/// sync::config::ServerConfiguration account;
/// account.baseUrl = QUrl(QStringLiteral("http://localhost:8080"));
/// ovsync::library::ServerConfigManager accounts({{1, account}});
/// const QUrl url = accounts.GetServerConfiguration(1).baseUrl;
/// \endcode
class ServerConfigManager : public sync::interf::IServerConfigManager {
public:
    /// By server id.
    explicit ServerConfigManager(const QMap<int, sync::config::ServerConfiguration>& accounts);

    /// Throws SyncException when there is no such account.
    sync::config::ServerConfiguration GetServerConfiguration(int serverId) override;

private:
    const QMap<int, sync::config::ServerConfiguration> _accounts;
};

}  // namespace library
}  // namespace ovsync
