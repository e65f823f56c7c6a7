#include "client/cli/input/MakeAt.h"

#include "client/sync/report/FolderMissing.h"
#include "client/sync/report/OfferedCommand.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace input {

using library::FoundResource;
using library::ServiceConnection;
using report::FolderMissing;

namespace {

/// None when there is nothing. Of what may not be looked at, nobody knows that it is no folder.
std::optional<FoundResource> FoundAt(ServiceConnection& connection, const Location& location) {
    try {
        return connection.Find(location.serverPath);
    } catch (const sync::core::SyncException&) {
        return FoundResource{true, {}};
    }
}

[[noreturn]] void ThrowIsFile(const Location& location) {
    throw FolderMissing(QStringLiteral("\"%1\" on %2 is a file, and no folder that anything can go into")
                            .arg(location.serverPath, location.Server()));
}

}  // namespace

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

void MakeFolderAt(ServiceConnection& connection, const Location& location, const std::function<void()>& make) {
    try {
        make();
    } catch (const sync::http::HttpException&) {
        connection.KeepLastAnswer();
        for (Location at = location; !at.serverPath.isEmpty(); at = at.Parent()) {
            if (IsFile(connection, at)) {
                ThrowIsFile(at);
            }
        }
        throw;
    }
}

bool IsFile(ServiceConnection& connection, const Location& location) {
    const std::optional<FoundResource> found = FoundAt(connection, location);
    return found && !found->isFolder;
}

void RequireFolderAbove(ServiceConnection& connection, const Location& location) {
    const Location above = location.Parent();
    const std::optional<FoundResource> found = FoundAt(connection, above);
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
        ThrowIsFile(above);
    }
}

}  // namespace input
}  // namespace ovsync
