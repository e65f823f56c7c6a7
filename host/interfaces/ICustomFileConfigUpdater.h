#pragma once

#include <QFileInfo>
#include <QObject>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// Keeps file records true around transfers. The order of the operations is part of the contract. Not thread-safe.
class OVSYNC_INTERFACES_EXPORT ICustomFileConfigUpdater : public QObject {
    Q_OBJECT

public:
    /// Brings `file`, which was uploaded from `uploaded`, up to what the service now holds. Throws SyncException when
    /// the service does not have the file, and leaves `file` unchanged then.
    virtual void UpdateCustomFileConfigAfterUpload(const config::FolderConfiguration& folder,
                                                   config::FileConfiguration& file, const QFileInfo& uploaded) = 0;

    /// Carries what identifies the version about to be downloaded from `remote` into `file`.
    virtual void UpdateCustomFileConfigBeforeDownload(const config::FolderConfiguration& folder,
                                                      config::FileConfiguration& file,
                                                      const config::FileConfiguration& remote) = 0;
};

}  // namespace interf
}  // namespace sync
