#include "client/cli/commands/ListedEntries.h"

#include <algorithm>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace commands {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

/// A name that begins with a byte order mark comes without it, or with an escape in its place, and in the order of
/// that.
template <typename Record>
void KeepByteOrderMarks(QVector<Record>& records) {
    bool hasAny = false;
    for (Record& record : records) {
        const QString name = local::NameOf(record.serverPath);
        if (name.startsWith(QChar(QChar::ByteOrderMark))) {
            record.name = name;
            hasAny = true;
        }
    }
    if (hasAny) {
        std::sort(records.begin(), records.end(),
                  [](const Record& a, const Record& b) { return a.serverPath < b.serverPath; });
    }
}

}  // namespace

void PrepareEntries(const library::ServiceConnection& connection, const input::Location& location,
                    const local::Exclusion& excluded, QVector<FolderConfiguration>& folders,
                    QVector<FileConfiguration>& files) {
    const int prefix = location.serverPath.isEmpty() ? 0 : location.serverPath.size() + 1;
    const auto isExcludedFolder = [&](const FolderConfiguration& folder) {
        return excluded.HasFolderAt(folder.serverPath.mid(prefix));
    };
    const auto isExcludedFile = [&](const FileConfiguration& file) {
        return excluded.HasFileAt(file.serverPath.mid(prefix));
    };
    folders.erase(std::remove_if(folders.begin(), folders.end(), isExcludedFolder), folders.end());
    files.erase(std::remove_if(files.begin(), files.end(), isExcludedFile), files.end());
    KeepByteOrderMarks(folders);
    KeepByteOrderMarks(files);
    for (FileConfiguration& file : files) {
        file.size = connection.SizeOf(file.serverPath, file.size);
    }
}

}  // namespace commands
}  // namespace ovsync
