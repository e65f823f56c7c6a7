#include "client/sync/WholeTreeCheck.h"

#include <algorithm>

#include "host/core/SyncException.h"

namespace ovsync {
namespace syncing {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

int LevelOf(const QString& path) {
    return path.isEmpty() ? 0 : static_cast<int>(path.count(QLatin1Char('/'))) + 1;
}

int LowestLevel(const RemoteTree& remote) {
    int level = 0;
    for (const QString& path : remote.AllFolders()) {
        level = std::max(level, LevelOf(path));
    }
    const RemoteTree::Files& files = remote.AllFiles();
    for (auto file = files.begin(); file != files.end(); ++file) {
        level = std::max(level, LevelOf(file.key()));
    }
    return level;
}

bool HasSomething(const ServiceFolder& service, const QString& path) {
    FolderConfiguration folder = service.FolderAt(path);
    const auto folders = service.folders->GetNameSortedDirsByFolder(folder);
    if (folders && !folders->isEmpty()) {
        return true;
    }
    std::shared_ptr<QVector<FileConfiguration>> files;
    return service.files->GetNameSortedFilesByFolder(folder, files) == 0 && files && !files->isEmpty();
}

}  // namespace

void RequireWholeTree(const ServiceFolder& service, const RemoteTree& remote) {
    if (remote.HasChecksums()) {
        return;
    }
    const int lowest = LowestLevel(remote);
    const auto require = [&service, lowest](const QString& path) {
        if (LevelOf(path) == lowest && HasSomething(service, path)) {
            throw sync::core::SyncException(
                QStringLiteral("The server lists only the upper %1 levels of %2 and leaves out what lies below, as in "
                               "\"%3\". Such a folder cannot be synced as a whole; sync its sub-folders one by one")
                    .arg(QString::number(lowest), service.address, path));
        }
    };
    require(QString());
    for (const QString& path : remote.AllFolders()) {
        require(path);
    }
}

}  // namespace syncing
}  // namespace ovsync
