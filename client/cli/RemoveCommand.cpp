#include "client/cli/RemoveCommand.h"

#include "client/cli/ExistingFolder.h"
#include "client/cli/FolderFormat.h"
#include "client/cli/UsageError.h"

namespace ovsync {
namespace cli {

void RemoveFolder(Connection& connection, const Location& location, bool asJson, Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root cannot be removed").arg(location.baseUrl.toString()));
    }
    sync::config::FolderConfiguration folder = FindFolder(connection, location, "rm");
    connection.Folders().DeleteFolder(folder);
    if (asJson) {
        output.Write(JsonObject(folder) + '\n');
    }
}

}  // namespace cli
}  // namespace ovsync
