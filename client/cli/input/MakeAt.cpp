#include "client/cli/input/MakeAt.h"

#include "client/sync/report/FolderMissing.h"
#include "client/sync/report/OfferedCommand.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace input {

using library::FoundResource;
using library::ServiceConnection;
using report::FolderMissing;

void MakeAt(ServiceConnection& connection, const Location& location, const std::function<void()>& make) {
    try {
        make();
    } catch (const sync::http::HttpException&) {
        // Each server has a status of its own for it. Where the folder is there, what was refused says more.
        connection.KeepLastAnswer();
        RequireFolderAbove(connection, location);
        throw;
    }
}

void RequireFolderAbove(ServiceConnection& connection, const Location& location) {
    const Location above = location.Parent();
    std::optional<FoundResource> found = FoundResource{true, {}};
    try {
        found = connection.Find(above.serverPath);
    } catch (const sync::core::SyncException&) {
        // One that may not be looked at may be there.
    }
    if (!found && above.serverPath.isEmpty()) {
        throw FolderMissing(QStringLiteral("there is no \"%1\" on %2, and no folder at its root that it could be in")
                                .arg(location.serverPath, location.Server()));
    }
    if (!found) {
        const QString command =
            report::OfferedCommand(QStringLiteral("mkdir -p"), connection.Credentials().user(), QString());
        throw FolderMissing(QStringLiteral("there is no folder \"%1\" on %2; \"%3 %4\" makes it")
                                .arg(above.serverPath, above.Server(), command,
                                     report::ShellWord(above.Url().toString(QUrl::FullyEncoded))));
    }
    if (!found->isFolder) {
        throw FolderMissing(QStringLiteral("\"%1\" on %2 is a file, and no folder that anything can go into")
                                .arg(above.serverPath, above.Server()));
    }
}

}  // namespace input
}  // namespace ovsync
