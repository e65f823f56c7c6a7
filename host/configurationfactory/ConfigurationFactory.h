#pragma once

#include <memory>

#include "host/core/OvSyncExport.h"
#include "host/interfaces/factory/IConfigurationFactory.h"

namespace sync {
namespace factory {

/// The factory that a library can make on the stack without having been given one. It hands out what the factory makes
/// that the running application installed. Thread-safe.
///
/// \code
/// #include "host/core/SyncException.h"
/// #include "host/interfaces/IServerConfigManager.h"
///
/// class Accounts : public sync::interf::IServerConfigManager {
///     sync::config::ServerConfiguration GetServerConfiguration(int) override {
///         sync::config::ServerConfiguration account;
///         account.baseUrl = QUrl(QLatin1String("http://localhost:8080"));
///         return account;
///     }
/// };
/// class Sources : public sync::interf::factory::IConfigurationFactory {
///     std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
///         return std::make_shared<Accounts>();
///     }
///     std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
///         throw sync::core::SyncException(QLatin1String("There are no records of synced files here."));
///     }
/// };
/// sync::factory::ConfigurationFactory::Install(std::make_shared<Sources>());
/// \endcode
class OVSYNC_CONFIGURATIONFACTORY_EXPORT ConfigurationFactory : public interf::factory::IConfigurationFactory {
    Q_OBJECT

public:
    /// From now on every ConfigurationFactory of the process hands out what `factory` makes; an empty pointer takes the
    /// installed one away. Kept until replaced.
    static void Install(std::shared_ptr<interf::factory::IConfigurationFactory> factory);

    /// Throws SyncException when nothing is installed.
    std::shared_ptr<interf::IServerConfigManager> CreateServerConfigManager() override;
    /// Throws SyncException when nothing is installed.
    std::shared_ptr<interf::IFileConfigManager> CreateFileConfigManager() override;
};

}  // namespace factory
}  // namespace sync
