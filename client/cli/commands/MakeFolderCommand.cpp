#include "client/cli/commands/MakeFolderCommand.h"

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/FolderFormat.h"

namespace ovsync {
namespace commands {

using input::Location;
using input::UsageError;
using library::ServiceConnection;
using output::JsonObject;
using output::Output;

void MakeFolder(ServiceConnection& connection, const Location& location, bool withParents, bool asJson,
                Output& output) {
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

}  // namespace commands
}  // namespace ovsync
