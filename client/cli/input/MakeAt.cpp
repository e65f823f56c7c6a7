#include "client/cli/input/MakeAt.h"

#include "client/sync/report/FolderMissing.h"
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
        // Each server has a status of its own for it.
        const Location above = location.Parent();
        std::optional<FoundResource> found = FoundResource{true, {}};
        connection.KeepLastAnswer();
        try {
            found = connection.Find(above.serverPath);
        } catch (const sync::core::SyncException&) {
            // What was refused says more.
        }
        if (!found) {
            throw FolderMissing(QStringLiteral("there is no folder \"%1\" on %2; \"ovsync mkdir -p %3\" makes it")
                                    .arg(above.serverPath, above.Server(), above.Url().toString(QUrl::FullyEncoded)));
        }
        if (!found->isFolder) {
            throw FolderMissing(QStringLiteral("\"%1\" on %2 is a file, and no folder that anything can go into")
                                    .arg(above.serverPath, above.Server()));
        }
        throw;
    }
}

}  // namespace input
}  // namespace ovsync
