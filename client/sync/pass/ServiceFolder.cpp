#include "client/sync/pass/ServiceFolder.h"

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace pass {

using local::FolderOf;
using local::NameOf;

QString ServiceFolder::ServerPath(const QString& path) const {
    return folder.serverPath.isEmpty() || path.isEmpty() ? folder.serverPath + path
                                                         : folder.serverPath + QLatin1Char('/') + path;
}

QString ServiceFolder::PathBelow(const QString& serverPath) const {
    const QString prefix = folder.serverPath.isEmpty() ? QString() : folder.serverPath + QLatin1Char('/');
    return serverPath.startsWith(prefix) ? serverPath.mid(prefix.size()) : QString();
}

sync::config::FolderConfiguration ServiceFolder::FolderAt(const QString& path) const {
    sync::config::FolderConfiguration below = folder;
    if (!path.isEmpty()) {
        below.name = NameOf(path);
        below.serverPath = ServerPath(path);
        below.localPath = folder.localPath + QLatin1Char('/') + path;
    }
    return below;
}

sync::config::FileConfiguration ServiceFolder::FileAt(const QString& path) const {
    return files->GetFileByName(FolderAt(FolderOf(path)), NameOf(path));
}

}  // namespace pass
}  // namespace ovsync
