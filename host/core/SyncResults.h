#pragma once

#include "host/core/OvSyncExport.h"

namespace sync {
namespace core {

/// What a folder operation did: its kind, and how many files and folders it created, updated, deleted and moved on
/// either side. A plain value. Failures are thrown, never returned in one of these.
class OVSYNC_CORE_EXPORT SyncResults {
public:
    enum ResultType { FolderCreated = 0, FolderUpdated = 1, FolderDeleted = 2, FolderMoved = 3 };

    SyncResults(ResultType type, int localFilesCreatedCount, int localFilesUpdatedCount, int localFilesDeletedCount,
                int localFilesMovedCount, int localFoldersCreatedCount, int localFoldersUpdatedCount,
                int localFoldersDeletedCount, int localFoldersMovedCount, int remoteFilesCreatedCount,
                int remoteFilesUpdatedCount, int remoteFilesDeletedCount, int remoteFilesMovedCount,
                int remoteFoldersCreatedCount, int remoteFoldersUpdatedCount, int remoteFoldersDeletedCount,
                int remoteFoldersMovedCount);

    ResultType resultType;
    int localFilesCreated;
    int localFilesUpdated;
    int localFilesDeleted;
    int localFilesMoved;
    int localFoldersCreated;
    int localFoldersUpdated;
    int localFoldersDeleted;
    int localFoldersMoved;
    int remoteFilesCreated;
    int remoteFilesUpdated;
    int remoteFilesDeleted;
    int remoteFilesMoved;
    int remoteFoldersCreated;
    int remoteFoldersUpdated;
    int remoteFoldersDeleted;
    int remoteFoldersMoved;
};

}  // namespace core
}  // namespace sync
