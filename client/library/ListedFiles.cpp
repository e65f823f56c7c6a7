#include "client/library/ListedFiles.h"

#include <utility>

namespace ovsync {
namespace library {

using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

ListedFiles::ListedFiles(std::shared_ptr<sync::interf::IRemoteFileManager> manager) : _manager(std::move(manager)) {}

int ListedFiles::Keep(FolderConfiguration folder) {
    folder.setLastSyncTime(QDateTime());
    std::shared_ptr<QVector<FileConfiguration>> files;
    if (_manager->GetNameSortedFilesByFolder(folder, files) != 0) {
        return 0;
    }
    for (const FileConfiguration& file : *files) {
        _kept.insert(folder.serverPath + QLatin1Char('/') + file.name, file);
    }
    return files->size();
}

void ListedFiles::Forget() {
    _kept.clear();
}

int ListedFiles::GetNameSortedFilesByFolder(FolderConfiguration& folder,
                                            std::shared_ptr<QVector<FileConfiguration>>& files) {
    return _manager->GetNameSortedFilesByFolder(folder, files);
}

bool ListedFiles::ShouldDownloadFile(const FileConfiguration& remote, FileConfiguration& local) {
    return _manager->ShouldDownloadFile(remote, local);
}

const FileConfiguration ListedFiles::GetFileByName(  // NOLINT(readability-const-return-type)
    const FolderConfiguration& folder, const QString& name) {
    const auto kept = _kept.constFind(folder.serverPath + QLatin1Char('/') + name);
    return kept == _kept.constEnd() ? _manager->GetFileByName(folder, name) : *kept;
}

}  // namespace library
}  // namespace ovsync
