#pragma once

#include <QMap>

#include "host/interfaces/IServerConfigManager.h"

namespace ovsync {
namespace library {

/// A fixed set of accounts. Thread-safe.
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
