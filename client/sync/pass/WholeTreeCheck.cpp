#include "client/sync/pass/WholeTreeCheck.h"

#include <algorithm>

#include "host/core/SyncException.h"

namespace ovsync {
namespace pass {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

int LevelOf(const QString& serverPath) {
    return static_cast<int>(serverPath.count(QLatin1Char('/')));
}

bool IsOfService(const FileConfiguration& file) {
    return !file.md5Checksum.isEmpty();
}

bool HasSomething(const ServiceFolder& service, FolderConfiguration folder) {
    folder.setLastSyncTime(QDateTime());
    const auto folders = service.folders->GetNameSortedDirsByFolder(folder);
    if (folders && !folders->isEmpty()) {
        return true;
    }
    std::shared_ptr<QVector<FileConfiguration>> files;
    return service.files->GetNameSortedFilesByFolder(folder, files) == 0 && files && !files->isEmpty();
}

}  // namespace

void RequireWholeTree(const ServiceFolder& service, const QVector<FolderConfiguration>& folders,
                      const QVector<FileConfiguration>& files) {
    if (std::any_of(files.begin(), files.end(), IsOfService)) {
        return;
    }
    int lowest = 0;
    for (const FolderConfiguration& folder : folders) {
        lowest = std::max(lowest, LevelOf(folder.serverPath));
    }
    for (const FileConfiguration& file : files) {
        lowest = std::max(lowest, LevelOf(file.serverPath));
    }
    for (const FolderConfiguration& folder : folders) {
        if (LevelOf(folder.serverPath) == lowest && HasSomething(service, folder)) {
            throw sync::core::SyncException(
                QStringLiteral("The server lists only the upper levels of %1 and leaves out what lies below, as in "
                               "\"%2\". Such a folder cannot be synced as a whole; sync its sub-folders one by one")
                    .arg(service.address, folder.serverPath));
        }
    }
}

}  // namespace pass
}  // namespace ovsync
