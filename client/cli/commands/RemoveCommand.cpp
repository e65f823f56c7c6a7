#include "client/cli/commands/RemoveCommand.h"

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

void RemoveFolder(ServiceConnection& connection, const Location& location, bool asJson, Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root cannot be removed").arg(location.baseUrl.toString()));
    }
    sync::config::FolderConfiguration folder = FindFolder(connection, location, "rm");
    connection.Folders().DeleteFolder(folder);
    if (asJson) {
        output.Write(JsonObject(folder) + '\n');
    }
}

}  // namespace commands
}  // namespace ovsync
