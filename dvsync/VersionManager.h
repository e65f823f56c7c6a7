#pragma once

#include <log4cplus/logger.h>

#include <QString>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/interfaces/IExternalSyncConfigManager.h"
#include "host/interfaces/IVersionManager.h"

namespace sync {
namespace dv {
namespace dvsync {

/// The versions of the application: the one that this library belongs to, and the one that the service offers. Keeps
/// its collaborator for its whole life and nothing else; whatever that throws passes through. As thread-safe as it is.
class DVSYNC_EXPORT VersionManager : public interf::IVersionManager {
    Q_OBJECT

public:
    explicit VersionManager(std::shared_ptr<interf::IExternalSyncConfigManager> externalSyncConfigManager);
    ~VersionManager() override;

    /// "5.1.1.1001"
    QString GetLocalAppVersion() override;

    /// Fetches the whole configuration at every call.
    QString GetMostCurrentAppVersion() override;

    /// Fetches the whole configuration at every call; empty when the service names no installer.
    QString GetAppInstallerUrl() override;

private:
    static log4cplus::Logger _logger;

    std::shared_ptr<interf::IExternalSyncConfigManager> externalSyncConfigManager;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
