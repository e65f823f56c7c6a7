#include "client/cli/commands/ExistingFolder.h"

#include "client/cli/input/UsageError.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace commands {

using input::Location;
using library::FoundResource;
using library::ServiceConnection;

sync::config::FolderConfiguration FindFolder(ServiceConnection& connection, const Location& location,
                                             const char* command) {
    const sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    sync::config::FolderConfiguration found;
    if (connection.Folders().GetFolderProperties(folder, found)) {
        return found;
    }
    const std::optional<FoundResource> other = connection.Find(location.serverPath);
    if (other && !other->isFolder) {
        throw input::UsageError(QStringLiteral("\"%1\" is a file, and %2 works on folders only")
                                    .arg(folder.serverPath, QLatin1String(command)));
    }
    ThrowNoSuchFolder(location);
}

void ThrowNoSuchFolder(const Location& location) {
    throw sync::http::HttpException(QStringLiteral("The service has no folder /%1").arg(location.serverPath),
                                    wire::HttpStatus::NotFound, location.Url());
}

}  // namespace commands
}  // namespace ovsync
