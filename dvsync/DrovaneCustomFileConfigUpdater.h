#pragma once

#include <QString>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/interfaces/ICustomFileConfigUpdater.h"
#include "host/interfaces/IFileConfigManager.h"
#include "host/interfaces/factory/IRemoteFileManagerFactory.h"

namespace sync {
namespace dv {
namespace dvsync {

/// Keeps the records of Drovane files true around transfers. Keeps its collaborators for its whole life; whatever they
/// throw passes through. Logs nothing. Not thread-safe.
class DVSYNC_EXPORT DrovaneCustomFileConfigUpdater : public interf::ICustomFileConfigUpdater {
public:
    /// Takes the source of file records from sync::factory::ConfigurationFactory, which must have been installed.
    explicit DrovaneCustomFileConfigUpdater(std::shared_ptr<interf::factory::IRemoteFileManagerFactory> factory);
    ~DrovaneCustomFileConfigUpdater() override;

    /// Asks the service, through a remote file manager made for the folder's server key, what it holds as the file, and
    /// writes that into `file`: its identity, the version after the one that the service names, and the size of
    /// `uploaded`. A version that is absent, no number or too great for an int counts as 0, so that 2147483648 follows
    /// 2147483647, and 1 follows that. Links without a target get the item ids of the local records that they lead to;
    /// whether the files exist is not looked at. Throws SyncException when the service knows no such file; `file` is
    /// unchanged then, and after whatever the lookup throws.
    void UpdateCustomFileConfigAfterUpload(const config::FolderConfiguration& folder, config::FileConfiguration& file,
                                           const QFileInfo& uploaded) override;

    /// Copies the size and the custom properties "version" and "resourceId"; one that `remote` lacks becomes empty.
    void UpdateCustomFileConfigBeforeDownload(const config::FolderConfiguration& folder,
                                              config::FileConfiguration& file,
                                              const config::FileConfiguration& remote) override;

private:
    // The way in for tests to what no public operation shows.
    friend class DrovaneCustomFileConfigUpdaterAccess;

    std::shared_ptr<interf::factory::IRemoteFileManagerFactory> remoteFileManagerFactory;
    std::shared_ptr<interf::IFileConfigManager> fileConfigManager;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
