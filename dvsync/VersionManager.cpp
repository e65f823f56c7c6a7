#include "dvsync/VersionManager.h"

#include <utility>

#include "dvsync/ExternalSyncConfig.h"

namespace sync {
namespace dv {
namespace dvsync {

log4cplus::Logger VersionManager::_logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("version"));

VersionManager::VersionManager(std::shared_ptr<interf::IExternalSyncConfigManager> externalSyncConfigManager_)
    : externalSyncConfigManager(std::move(externalSyncConfigManager_)) {}

VersionManager::~VersionManager() = default;

QString VersionManager::GetLocalAppVersion() {
    return QLatin1String("5.1.1.1001");
}

QString VersionManager::GetMostCurrentAppVersion() {
    return externalSyncConfigManager->GetExternalSyncConfig().mostCurrentVersion;
}

QString VersionManager::GetAppInstallerUrl() {
    return externalSyncConfigManager->GetExternalSyncConfig().installerUrl;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
