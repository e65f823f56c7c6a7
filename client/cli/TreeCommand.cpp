#include "client/cli/TreeCommand.h"

#include "client/cli/Complaint.h"
#include "client/cli/DateText.h"
#include "client/cli/NoSuchFolder.h"

namespace ovsync {
namespace cli {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

/// A listed record is shown by its path below the listed folder; a file that was asked for itself by its name.
template <typename Record>
void NameByPathBelow(const QString& serverPath, QVector<Record>& records) {
    const int skipped = serverPath.isEmpty() ? 0 : serverPath.size() + 1;
    for (Record& record : records) {
        if (record.serverPath.size() > skipped) {
            record.name = record.serverPath.mid(skipped);
        }
    }
}

}  // namespace

void ShowTree(Connection& connection, const Location& location, const QDateTime& since, ListFormat format,
              Output& output) {
    FolderConfiguration folder = connection.Folder(location.serverPath);
    folder.setLastSyncTime(since);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    const int status = connection.Folders().GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    if (status == 404) {
        ThrowNoSuchFolder(location);
    }
    const bool isUnchanged = status == 304;
    const QByteArray time = DateText(folder.getLastServerSyncRequestTime());
    if (!isUnchanged) {
        NameByPathBelow(location.serverPath, *folders);
        NameByPathBelow(location.serverPath, *files);
    }
    if (format == ListFormat::Json) {
        output.Write("{\"serverTime\":" + (time.isEmpty() ? "null" : '"' + time + '"') +
                     (isUnchanged ? ",\"changed\":false" : ",\"changed\":true,\"entries\":"));
        if (!isUnchanged) {
            WriteEntries(*folders, *files, format, output);
        }
        output.Write("}\n");
        return;
    }
    if (isUnchanged) {
        Complain(QStringLiteral("nothing changed"));
    } else {
        WriteEntries(*folders, *files, format, output);
    }
    if (!time.isEmpty()) {
        Complain(QStringLiteral("the service's time is ") + QString::fromLatin1(time));
    }
}

}  // namespace cli
}  // namespace ovsync
