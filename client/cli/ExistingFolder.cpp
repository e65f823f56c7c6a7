#include "client/cli/ExistingFolder.h"

#include "client/cli/NoSuchFolder.h"
#include "client/cli/UsageError.h"

namespace ovsync {
namespace cli {

sync::config::FolderConfiguration FindFolder(Connection& connection, const Location& location, const char* command) {
    const sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    sync::config::FolderConfiguration found;
    if (connection.Folders().GetFolderProperties(folder, found)) {
        return found;
    }
    sync::config::FileConfiguration file;
    file.serverId = folder.serverId;
    file.serverPath = folder.serverPath;
    if (connection.Folders().FileExists(file)) {
        throw UsageError(QStringLiteral("/%1 is a file, and %2 works on folders only")
                             .arg(folder.serverPath, QLatin1String(command)));
    }
    ThrowNoSuchFolder(location);
}

}  // namespace cli
}  // namespace ovsync
