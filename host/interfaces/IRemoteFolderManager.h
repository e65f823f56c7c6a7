#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QVector>
#include <memory>

#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/core/OvSyncExport.h"
#include "host/core/SyncResults.h"
#include "host/interfaces/ISyncFilter.h"

namespace sync {
namespace interf {

/// The folders of a service. Operations block until the service has answered and throw HttpException when the answer is
/// a failure. The order of the operations is part of the contract. One operation at a time.
class OVSYNC_INTERFACES_EXPORT IRemoteFolderManager : public QObject {
    Q_OBJECT

public:
    /// Creates `folder` inside the folder with the id `parentFolderId`, with every missing folder on its path when
    /// `createParents` is set, and writes the new folder's identity into `folder`.
    virtual core::SyncResults CreateFolder(config::FolderConfiguration& folder, QString parentFolderId,
                                           bool createParents) = 0;

    /// Deletes `folder`. A folder that the service no longer has counts as deleted.
    virtual core::SyncResults DeleteFolder(config::FolderConfiguration& folder) = 0;

    /// Moves the folder at the server path of `from` to the server path of `to`.
    virtual core::SyncResults MoveFolder(const config::FolderConfiguration& from,
                                         const config::FolderConfiguration& to) = 0;

    virtual bool FolderExists(const config::FolderConfiguration& folder) = 0;

    virtual bool FileExists(const config::FileConfiguration& file) = 0;

    /// Copies `folder` into `result` together with what the service says of it; false, and `result` untouched, when the
    /// service has no such folder.
    virtual bool GetFolderProperties(const config::FolderConfiguration& folder,
                                     config::FolderConfiguration& result) = 0;

    /// The direct sub-folders of `folder` in name order; an empty pointer when nothing changed since its last sync
    /// time.
    virtual std::shared_ptr<QVector<config::FolderConfiguration>> GetNameSortedDirsByFolder(
        config::FolderConfiguration& folder) = 0;

    /// Everything below `folder`. Returns 0, 304 or 404 as IRemoteFileManager does; the outputs are replaced on 0 and
    /// untouched otherwise.
    virtual int GetAllFilesAndSubFoldersByFolder(config::FolderConfiguration& folder,
                                                 std::shared_ptr<QVector<config::FolderConfiguration>>& folders,
                                                 std::shared_ptr<QVector<config::FileConfiguration>>& files) = 0;

    /// Adds the number of files of the folder at the server path `path` to `fileCount` and their sizes in bytes to
    /// `totalSize`. Returns 0 or 404.
    virtual int GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount,
                              qint64& totalSize, std::shared_ptr<sync::interf::ISyncFilter> fileFilter,
                              std::shared_ptr<sync::interf::ISyncFilter> folderFilter) = 0;

    /// The same, and appends the server paths of the folders to `subFolders`.
    virtual int GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount,
                              qint64& totalSize, QList<QString>& subFolders,
                              std::shared_ptr<sync::interf::ISyncFilter> fileFilter,
                              std::shared_ptr<sync::interf::ISyncFilter> folderFilter) = 0;
};

}  // namespace interf
}  // namespace sync
