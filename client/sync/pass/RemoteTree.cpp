#include "client/sync/pass/RemoteTree.h"

#include <QHash>
#include <algorithm>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace pass {

using local::Exclusion;
using local::FoldedPath;
using local::FolderOf;
using local::LocalSnapshot;
using local::NameOf;
using local::ReasonAgainst;
using report::SyncEvent;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

bool IsAtOrBelow(const QSet<QString>& places, const QString& path) {
    for (QString above = path; !above.isEmpty(); above = FolderOf(above)) {
        if (places.contains(above)) {
            return true;
        }
    }
    return false;
}

}  // namespace

RemoteTree::RemoteTree(const ServiceFolder& service, const QVector<FolderConfiguration>& folders,
                       const QVector<FileConfiguration>& files, const Exclusion& exclusion)
    : _prefix(service.ServerPath(QString()) + (service.folder.serverPath.isEmpty() ? QString() : QStringLiteral("/"))) {
    for (const FolderConfiguration& folder : folders) {
        const QString path = _Accept(folder.serverPath, folder.name, true, exclusion);
        if (path.isEmpty()) {
            continue;
        }
        if (!_folders.insert(path).second) {
            _Refuse(path, QStringLiteral("the service has more than one entry of this name"));
        }
        if (!IsMadeUpId(folder.getServerFolderId())) {
            _folderIds.insert(path, folder.getServerFolderId());
        }
    }
    for (const FileConfiguration& file : files) {
        if (file.serverPath == service.folder.serverPath) {
            throw WrongFolder::OfFile(file.serverPath);
        }
        const QString path = _Accept(file.serverPath, file.name, false, exclusion);
        if (path.isEmpty()) {
            continue;
        }
        if (_files.contains(path) || HasFolder(path)) {
            _Refuse(path, QStringLiteral("the service has more than one entry of this name"));
        }
        _files.insert(path, file);
    }
    _RemoveRefused();
    _hasChecksums = std::any_of(_files.begin(), _files.end(),
                                [](const FileConfiguration& file) { return !file.md5Checksum.isEmpty(); });
}

void RemoteTree::RefuseClashes(const QStringList& local, bool tellsCaseApart, bool tellsFormsApart) {
    if (tellsCaseApart && tellsFormsApart) {
        return;
    }
    QHash<QString, QString> seen;
    for (const QString& path : local) {
        seen.insert(FoldedPath(path, tellsCaseApart, tellsFormsApart), path);
    }
    const auto check = [&](const QString& path) {
        QString& first = seen[FoldedPath(path, tellsCaseApart, tellsFormsApart)];
        if (!first.isEmpty() && first != path) {
            const QString reason = QStringLiteral("the disk here takes \"%1\" and \"%2\" for the same name");
            _Refuse(path, reason.arg(path, first));
            _Refuse(first, reason.arg(first, path));
        }
        first = path;
    };
    for (const QString& path : _folders) {
        check(path);
    }
    for (const QString& path : _files.keys()) {
        check(path);
    }
    _RemoveRefused();
}

void RemoteTree::LeaveOut(const QString& path) {
    _refusedPaths.insert(path);
    _RemoveRefused();
}

QVector<SyncEvent> RemoteTree::LeaveOutLinks(const LocalSnapshot& snapshot) {
    QVector<SyncEvent> events;
    for (const QString& path : snapshot.Others()) {
        const local::LocalEntry entry = snapshot.entries.value(path);
        if (HasFile(path) || HasFolder(path)) {
            events.append({SyncEvent::Kind::Refused, path, local::BlockedText(entry, HasFolder(path))});
        } else {
            events.append({SyncEvent::Kind::Skipped, path, local::SkippedText(entry)});
        }
        _refusedPaths.insert(path);
    }
    _RemoveRefused();
    return events;
}

void RemoteTree::Move(const QString& from, const QString& to, const QString& serverFrom, const QString& serverTo) {
    _moved.insert(from);
    const QString below = from + QLatin1Char('/');
    const auto isMoved = [&](const QString& path) { return path == from || path.startsWith(below); };
    const auto movedPath = [&](const QString& path) { return to + path.mid(from.size()); };
    QStringList folders;
    for (auto folder = _folders.lower_bound(from); folder != _folders.end() && folder->startsWith(from);) {
        if (isMoved(*folder)) {
            folders.append(*folder);
            folder = _folders.erase(folder);
        } else {
            ++folder;
        }
    }
    for (const QString& folder : folders) {
        _folders.insert(movedPath(folder));
        if (_folderIds.contains(folder)) {
            _folderIds.insert(movedPath(folder), _folderIds.take(folder));
        }
    }
    Files files;
    for (auto file = _files.lowerBound(from); file != _files.end() && file.key().startsWith(from);) {
        if (isMoved(file.key())) {
            files.insert(file.key(), file.value());
            file = _files.erase(file);
        } else {
            ++file;
        }
    }
    for (auto file = files.begin(); file != files.end(); ++file) {
        file->serverPath = serverTo + file->serverPath.mid(serverFrom.size());
        file->name = NameOf(movedPath(file.key()));
        _files.insert(movedPath(file.key()), *file);
    }
}

bool RemoteTree::WasMoved(const QString& path) const {
    return !_moved.isEmpty() && IsAtOrBelow(_moved, path);
}

QString RemoteTree::FolderOfId(const QString& itemId) const {
    const QString path = itemId.isEmpty() ? QString() : _folderIds.key(itemId);
    return HasFolder(path) ? path : QString();
}

QHash<QString, QString> RemoteTree::FilesById(const QSet<QString>& left) const {
    QHash<QString, QString> files;
    for (auto file = _files.begin(); file != _files.end(); ++file) {
        if (!left.contains(file.key()) && !IsMadeUpId(file->itemId)) {
            files.insert(file->itemId, file.key());
        }
    }
    return files;
}

void RemoteTree::Forget(const QString& path) {
    _files.remove(path);
    _folders.erase(path);
}

bool RemoteTree::IsRefused(const QString& path) const {
    return !_refusedPaths.isEmpty() && IsAtOrBelow(_refusedPaths, path);
}

bool RemoteTree::HasRefusedBelow(const QString& path) const {
    return std::any_of(_refusedPaths.begin(), _refusedPaths.end(),
                       [&path](const QString& refused) { return refused.startsWith(path + QLatin1Char('/')); });
}

QString RemoteTree::_Accept(const QString& serverPath, const QString& name, bool isFolder, const Exclusion& exclusion) {
    if (!serverPath.startsWith(_prefix)) {
        _Refuse(serverPath, QStringLiteral("it does not lie below the folder that was listed"));
        return QString();
    }
    QString path = serverPath.mid(_prefix.size());
    if (isFolder ? exclusion.HasFolderAt(path) : exclusion.HasFileAt(path)) {
        return QString();
    }
    const QStringList names = path.split(QLatin1Char('/'));
    if (isFolder && local::IsTemporaryName(names.last())) {
        _temporaries.append(path);
        return QString();
    }
    for (const QString& segment : names) {
        const QString reason = ReasonAgainst(segment);
        if (!reason.isEmpty()) {
            _Refuse(path, reason + QStringLiteral("; rename it on the service"));
            return QString();
        }
    }
    // An encoded '/' inside a name looks like one between names by now.
    if (names.last() != name) {
        _Refuse(path, QStringLiteral("the name \"%1\" is not that of its place").arg(name));
        return QString();
    }
    // What lies in a refused folder is told of with it.
    if (IsRefused(FolderOf(path))) {
        return QString();
    }
    if (!HasFolder(FolderOf(path))) {
        _Refuse(path, QStringLiteral("the service lists it without the folder that it lies in"));
        return QString();
    }
    return path;
}

void RemoteTree::_Refuse(const QString& path, const QString& reason) {
    if (!_refusedPaths.contains(path)) {
        _refusedPaths.insert(path);
        _refused.append({SyncEvent::Kind::Refused, path, reason});
    }
}

void RemoteTree::_RemoveRefused() {
    if (_refusedPaths.isEmpty()) {
        return;
    }
    const size_t before = _folders.size() + static_cast<size_t>(_files.size());
    for (auto folder = _folders.begin(); folder != _folders.end();) {
        folder = IsRefused(*folder) ? _folders.erase(folder) : std::next(folder);
    }
    for (auto file = _files.begin(); file != _files.end();) {
        file = IsRefused(file.key()) ? _files.erase(file) : std::next(file);
    }
    _hasLeftOut = _hasLeftOut || _folders.size() + static_cast<size_t>(_files.size()) < before;
}

}  // namespace pass
}  // namespace ovsync
