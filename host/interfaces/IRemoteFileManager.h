#pragma once

#include <QObject>
#include <QString>
#include <QVector>
#include <memory>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// The files of a service. Operations block until the service has answered and throw HttpException when the answer is a
/// failure. The order of the operations is part of the contract. Not thread-safe.
class OVSYNC_INTERFACES_EXPORT IRemoteFileManager : public QObject {
    Q_OBJECT

public:
    /// Lists the files of `folder` in name order. Returns 0, or 304 when nothing changed since the folder's last sync
    /// time, or 404 when the service has no such folder; `files` is replaced on 0 and untouched otherwise.
    virtual int GetNameSortedFilesByFolder(config::FolderConfiguration& folder,
                                           std::shared_ptr<QVector<config::FileConfiguration>>& files) = 0;

    /// Whether the remote file must be fetched over the local one. May add an empty "version" to `local`.
    virtual bool ShouldDownloadFile(const config::FileConfiguration& remote, config::FileConfiguration& local) = 0;

    /// The record of the file `name` of `folder`, or a default record when the answer holds none.
    // The const value is part of the operation's signature.
    virtual const config::FileConfiguration GetFileByName(  // NOLINT(readability-const-return-type)
        const config::FolderConfiguration& folder, const QString& name) = 0;
};

}  // namespace interf
}  // namespace sync
