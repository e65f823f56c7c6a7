#include "client/cli/MakeFolderCommand.h"

#include "client/cli/ExistingFolder.h"
#include "client/cli/FolderFormat.h"
#include "client/cli/UsageError.h"

namespace ovsync {
namespace cli {

void MakeFolder(Connection& connection, const Location& location, bool withParents, bool asJson, Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root is always there").arg(location.baseUrl.toString()));
    }
    sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    folder.serverRootPath.clear();
    QString parentId;
    if (!withParents) {
        parentId = FindFolder(connection, location.Parent(), "mkdir").getServerFolderId();
    }
    connection.Folders().CreateFolder(folder, parentId, withParents);
    if (asJson) {
        output.Write(JsonObject(folder) + '\n');
    }
}

}  // namespace cli
}  // namespace ovsync
