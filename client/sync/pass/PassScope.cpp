#include "client/sync/pass/PassScope.h"

#include <algorithm>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace pass {

using local::FolderOf;
using store::FolderRecord;

namespace {

/// Up to so many paths are looked up one by one.
const int FewPaths = 2000;

}  // namespace

void PassScope::Narrow(const QSet<QString>& paths) {
    _isWhole = false;
    _paths = paths;
    for (const QString& path : paths) {
        for (QString folder = FolderOf(path); !folder.isEmpty() && !_paths.contains(folder);
             folder = FolderOf(folder)) {
            _paths.insert(folder);
        }
    }
}

void PassScope::Move(const QString& from, const QString& to) {
    QStringList moved;
    for (const QString& path : _paths) {
        if (path == from || path.startsWith(from + QLatin1Char('/'))) {
            moved.append(to + path.mid(from.size()));
        }
    }
    for (const QString& path : moved) {
        _paths.insert(path);
    }
}

QStringList PassScope::Files() const {
    QStringList files;
    if (!_isWhole && _paths.size() <= FewPaths) {
        std::copy_if(_paths.begin(), _paths.end(), std::back_inserter(files),
                     [this](const QString& path) { return _records.HasFile(path); });
        return files;
    }
    files = _records.FilePaths();
    if (!_isWhole) {
        const auto isOutside = [this](const QString& path) { return !_paths.contains(path); };
        files.erase(std::remove_if(files.begin(), files.end(), isOutside), files.end());
    }
    return files;
}

QStringList PassScope::Folders() const {
    QStringList folders;
    for (const FolderRecord& folder : FolderRecords()) {
        folders.append(folder.path);
    }
    return folders;
}

QList<FolderRecord> PassScope::FolderRecords() const {
    QList<FolderRecord> folders;
    if (_isWhole || _paths.size() > FewPaths) {
        folders = _records.FolderRecords();
        const auto isOutside = [this](const FolderRecord& folder) {
            return !_isWhole && !_paths.contains(folder.path);
        };
        folders.erase(std::remove_if(folders.begin(), folders.end(), isOutside), folders.end());
        return folders;
    }
    for (const QString& path : _paths) {
        if (const std::optional<FolderRecord> folder = _records.FindFolder(path)) {
            folders.append(*folder);
        }
    }
    std::sort(folders.begin(), folders.end(),
              [](const FolderRecord& a, const FolderRecord& b) { return a.path < b.path; });
    return folders;
}

}  // namespace pass
}  // namespace ovsync
