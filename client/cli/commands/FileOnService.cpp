#include "client/cli/commands/FileOnService.h"

#include "client/cli/input/UsageError.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace commands {

using input::Location;
using input::UsageError;
using library::FoundResource;
using library::ServiceConnection;

FoundResource FindResource(ServiceConnection& connection, const Location& location) {
    const std::optional<FoundResource> found = connection.Find(location.serverPath);
    if (!found) {
        throw sync::http::HttpException(
            QStringLiteral("The service has neither a file nor a folder /%1").arg(location.serverPath),
            wire::HttpStatus::NotFound, location.Url());
    }
    return *found;
}

sync::config::FileConfiguration FindFile(ServiceConnection& connection, const Location& location, const char* advice) {
    const FoundResource found = FindResource(connection, location);
    if (found.isFolder) {
        throw UsageError(QStringLiteral("\"%1\" is a folder; %2").arg(location.serverPath, QLatin1String(advice)));
    }
    return found.file;
}

Location TargetOf(ServiceConnection& connection, const Location& location, const QString& name) {
    bool isFolder = location.isTypedAsFolder;
    if (!isFolder) {
        const std::optional<FoundResource> found = connection.Find(location.serverPath);
        isFolder = found && found->isFolder;
    }
    return isFolder ? location.Below(name) : location;
}

}  // namespace commands
}  // namespace ovsync
