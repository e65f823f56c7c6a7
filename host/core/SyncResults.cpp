#include "host/core/SyncResults.h"

namespace sync {
namespace core {

SyncResults::SyncResults(ResultType type, int localFilesCreatedCount, int localFilesUpdatedCount,
                         int localFilesDeletedCount, int localFilesMovedCount, int localFoldersCreatedCount,
                         int localFoldersUpdatedCount, int localFoldersDeletedCount, int localFoldersMovedCount,
                         int remoteFilesCreatedCount, int remoteFilesUpdatedCount, int remoteFilesDeletedCount,
                         int remoteFilesMovedCount, int remoteFoldersCreatedCount, int remoteFoldersUpdatedCount,
                         int remoteFoldersDeletedCount, int remoteFoldersMovedCount)
    : resultType(type),
      localFilesCreated(localFilesCreatedCount),
      localFilesUpdated(localFilesUpdatedCount),
      localFilesDeleted(localFilesDeletedCount),
      localFilesMoved(localFilesMovedCount),
      localFoldersCreated(localFoldersCreatedCount),
      localFoldersUpdated(localFoldersUpdatedCount),
      localFoldersDeleted(localFoldersDeletedCount),
      localFoldersMoved(localFoldersMovedCount),
      remoteFilesCreated(remoteFilesCreatedCount),
      remoteFilesUpdated(remoteFilesUpdatedCount),
      remoteFilesDeleted(remoteFilesDeletedCount),
      remoteFilesMoved(remoteFilesMovedCount),
      remoteFoldersCreated(remoteFoldersCreatedCount),
      remoteFoldersUpdated(remoteFoldersUpdatedCount),
      remoteFoldersDeleted(remoteFoldersDeletedCount),
      remoteFoldersMoved(remoteFoldersMovedCount) {}

}  // namespace core
}  // namespace sync
