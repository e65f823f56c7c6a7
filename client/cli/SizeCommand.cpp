#include "client/cli/SizeCommand.h"

#include "client/cli/GlobFilter.h"
#include "client/cli/NoSuchFolder.h"

namespace ovsync {
namespace cli {

void MeasureTree(Connection& connection, const Location& location, const QStringList& excluded, bool asJson,
                 Output& output) {
    const auto filter = std::make_shared<GlobFilter>(excluded);
    const sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    int count = 0;
    qint64 size = 0;
    if (connection.Folders().GetFolderSize(folder.serverPath, folder.serverId, true, count, size, filter, filter) ==
        404) {
        ThrowNoSuchFolder(location);
    }
    const QByteArray files = QByteArray::number(count);
    const QByteArray bytes = QByteArray::number(size);
    output.Write(asJson ? "{\"files\":" + files + ",\"bytes\":" + bytes + "}\n"
                        : files + " files, " + bytes + " bytes\n");
}

}  // namespace cli
}  // namespace ovsync
