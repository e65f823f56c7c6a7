#include "client/cli/StatCommand.h"

#include "client/cli/FileFormat.h"
#include "client/cli/FolderFormat.h"

namespace ovsync {
namespace cli {

void ShowResource(Connection& connection, const Location& location, bool asJson, Output& output) {
    sync::config::FolderConfiguration folder;
    if (connection.Folders().GetFolderProperties(connection.Folder(location.serverPath), folder)) {
        output.Write(asJson ? JsonObject(folder) + '\n' : FieldLines(folder, output));
        return;
    }
    const sync::config::FileConfiguration file =
        connection.Files().GetFileByName(connection.Folder(location.ParentPath()), location.Name());
    output.Write(asJson ? JsonObject(file) + '\n' : FieldLines(file, output));
}

}  // namespace cli
}  // namespace ovsync
