#include "client/sync/part/ServicePart.h"

#include <algorithm>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace part {

using changes::ServiceChanges;
using local::FolderOf;
using store::FolderRecord;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

bool ServicePart::Add(const ServiceChanges& changes) {
    for (const QString& serverPath : changes.gone) {
        const QString path = _sides.service.PathBelow(serverPath);
        if (path.isEmpty()) {
            return false;
        }
        _AddGone(path);
    }
    return (changes.whole.isEmpty() || _AddWhole(changes)) &&
           std::all_of(changes.folders.begin(), changes.folders.end(),
                       [this](const FolderConfiguration& folder) { return _AddFolder(folder); }) &&
           std::all_of(changes.files.begin(), changes.files.end(),
                       [this](const FileConfiguration& file) { return _AddFile(file); }) &&
           _HasAllFolders();
}

bool ServicePart::AddLookedAt(const ServiceChanges& looked) {
    const auto isKnown = [this](const FolderConfiguration& folder) {
        return _sides.records.FindFolder(_sides.service.PathBelow(folder.serverPath)).has_value();
    };
    return std::all_of(looked.folders.begin(), looked.folders.end(), isKnown) && Add(looked);
}

bool ServicePart::_AddWhole(const ServiceChanges& changes) {
    QSet<QString> told;
    for (const FileConfiguration& file : changes.files) {
        told.insert(_sides.service.PathBelow(file.serverPath));
    }
    for (const FolderConfiguration& folder : changes.folders) {
        told.insert(_sides.service.PathBelow(folder.serverPath));
    }
    QSet<QString> whole;
    for (const QString& serverPath : changes.whole) {
        const QString path = _sides.service.PathBelow(serverPath);
        if (path.isEmpty() && serverPath != _sides.service.folder.serverPath) {
            return false;
        }
        whole.insert(path);
        for (const QString& known : _sides.records.PathsIn(path)) {
            if (!told.contains(known)) {
                _AddGone(known);
            }
        }
    }
    // What is in an unknown one is not as it is recorded.
    return std::all_of(changes.folders.begin(), changes.folders.end(), [&](const FolderConfiguration& folder) {
        const QString path = _sides.service.PathBelow(folder.serverPath);
        return whole.contains(path) || _sides.exclusion.HasFolderAt(path) || _sides.records.FindFolder(path);
    });
}

bool ServicePart::_AddFolder(const FolderConfiguration& folder) {
    const QString path = _sides.service.PathBelow(folder.serverPath);
    if (path.isEmpty()) {
        return false;
    }
    if (_sides.exclusion.HasFolderAt(path)) {
        return true;
    }
    // Of what was in one whose place another one took, nothing is told.
    const std::optional<FolderRecord> known = _sides.records.FindFolder(path);
    const bool isOther = known && !known->itemId.isEmpty() && known->itemId != folder.getServerFolderId();
    if (isOther || _gone.contains(path)) {
        return false;
    }
    _folders.insert(path, folder);
    return true;
}

bool ServicePart::_AddFile(const FileConfiguration& file) {
    const QString path = _sides.service.PathBelow(file.serverPath);
    if (path.isEmpty()) {
        return false;
    }
    if (_sides.exclusion.HasFileAt(path)) {
        return true;
    }
    for (const QString& below : _sides.records.PathsBelow(path)) {
        _gone.insert(below);
    }
    _files.insert(path, file);
    return true;
}

void ServicePart::_AddGone(const QString& path) {
    _gone.insert(path);
    for (const QString& below : _sides.records.PathsBelow(path)) {
        _gone.insert(below);
    }
}

bool ServicePart::_HasAllFolders() const {
    const auto hasFolderOf = [this](const QString& path) { return _HasFolder(FolderOf(path)); };
    const QStringList folders = _folders.keys();
    const QStringList files = _files.keys();
    return std::all_of(folders.begin(), folders.end(), hasFolderOf) &&
           std::all_of(files.begin(), files.end(), hasFolderOf);
}

bool ServicePart::_HasFolder(const QString& path) const {
    if (path.isEmpty() || _folders.contains(path)) {
        return true;
    }
    return !_gone.contains(path) && !_files.contains(path) && _sides.records.FindFolder(path);
}

QSet<QString> ServicePart::Paths() const {
    QSet<QString> paths = _gone;
    for (auto folder = _folders.begin(); folder != _folders.end(); ++folder) {
        paths.insert(folder.key());
    }
    for (auto file = _files.begin(); file != _files.end(); ++file) {
        paths.insert(file.key());
    }
    return paths;
}

bool ServicePart::Tells(const QString& path) const {
    return _gone.contains(path) || _folders.contains(path) || _files.contains(path);
}

QVector<FolderConfiguration> ServicePart::Folders() const {
    QMap<QString, FolderConfiguration> folders = _folders;
    for (const FolderRecord& known : _sides.scope.FolderRecords()) {
        if (!Tells(known.path)) {
            FolderConfiguration folder = _sides.service.FolderAt(known.path);
            folder.setServerFolderId(known.itemId);
            folders.insert(known.path, folder);
        }
    }
    return folders.values().toVector();
}

QVector<FileConfiguration> ServicePart::Files() const {
    QVector<FileConfiguration> files = _files.values().toVector();
    for (const QString& path : _sides.scope.Files()) {
        if (Tells(path)) {
            continue;
        }
        FileConfiguration file = _sides.records.FindFile(path)->file;
        file.size = pass::ListedSize(file.size);
        file.serverPath = _sides.service.ServerPath(path);
        files.append(file);
    }
    return files;
}

}  // namespace part
}  // namespace ovsync
