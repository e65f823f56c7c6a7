#include "client/cli/commands/SizeCommand.h"
#include "client/wire/HttpStatus.h"

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/GlobFilter.h"

namespace ovsync {
namespace commands {

using input::GlobFilter;
using input::Location;
using library::ServiceConnection;
using output::Output;
using wire::HttpStatus;

namespace {

QByteArray Counted(qint64 number, const char* unit) {
    return QByteArray::number(number) + ' ' + unit + (number == 1 ? "" : "s");
}

}  // namespace

void MeasureTree(ServiceConnection& connection, const Location& location, const QStringList& excluded, bool asJson,
                 Output& output) {
    const auto filter = std::make_shared<GlobFilter>(excluded);
    const sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    int count = 0;
    qint64 size = 0;
    if (connection.Folders().GetFolderSize(folder.serverPath, folder.serverId, true, count, size, filter, filter) ==
        HttpStatus::NotFound) {
        ThrowNoSuchFolder(location);
    }
    output.Write(asJson ? "{\"files\":" + QByteArray::number(count) + ",\"bytes\":" + QByteArray::number(size) + "}\n"
                        : Counted(count, "file") + ", " + Counted(size, "byte") + '\n');
}

}  // namespace commands
}  // namespace ovsync
