#include "host/configurationfactory/ConfigurationFactory.h"

#include <QMutex>
#include <QMutexLocker>

#include "host/core/SyncException.h"

namespace sync {
namespace factory {

namespace {

struct InstalledFactory {
    QMutex mutex;
    std::shared_ptr<interf::factory::IConfigurationFactory> factory;
};

InstalledFactory& Installed() {
    static InstalledFactory installed;
    return installed;
}

std::shared_ptr<interf::factory::IConfigurationFactory> RequireInstalled() {
    InstalledFactory& installed = Installed();
    const QMutexLocker lock(&installed.mutex);
    if (!installed.factory) {
        throw core::SyncException(
            QLatin1String("No configuration factory is installed. The application must call "
                          "ConfigurationFactory::Install before it makes an object that reads settings."));
    }
    return installed.factory;
}

}  // namespace

void ConfigurationFactory::Install(std::shared_ptr<interf::factory::IConfigurationFactory> factory) {
    InstalledFactory& installed = Installed();
    const QMutexLocker lock(&installed.mutex);
    // The one taken away is destroyed by the parameter, after the lock is gone.
    installed.factory.swap(factory);
}

std::shared_ptr<interf::IServerConfigManager> ConfigurationFactory::CreateServerConfigManager() {
    return RequireInstalled()->CreateServerConfigManager();
}

std::shared_ptr<interf::IFileConfigManager> ConfigurationFactory::CreateFileConfigManager() {
    return RequireInstalled()->CreateFileConfigManager();
}

}  // namespace factory
}  // namespace sync
