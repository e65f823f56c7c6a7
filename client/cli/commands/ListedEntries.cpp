#include "client/cli/commands/ListedEntries.h"

#include <algorithm>

namespace ovsync {
namespace commands {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

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
    for (FileConfiguration& file : files) {
        file.size = connection.SizeOf(file.serverPath, file.size);
    }
}

}  // namespace commands
}  // namespace ovsync
