#include "client/cli/StatCommand.h"

#include "client/cli/FileFormat.h"
#include "client/cli/UsageError.h"

namespace ovsync {
namespace cli {

void ShowFile(Connection& connection, const Location& location, bool asJson, Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: this is the server itself, not a file").arg(location.baseUrl.toString()));
    }
    const sync::config::FileConfiguration file =
        connection.Files().GetFileByName(connection.Folder(location.ParentPath()), location.Name());
    output.Write(asJson ? JsonObject(file) + '\n' : FieldLines(file, output));
}

}  // namespace cli
}  // namespace ovsync
