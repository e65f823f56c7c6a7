#include "client/sync/pass/RemoteTree.h"

#include <QHash>
#include <algorithm>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace pass {

using local::Exclusion;
using local::FoldedPath;
using local::FolderOf;
using local::ReasonAgainst;
using report::SyncEvent;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

RemoteTree::RemoteTree(const ServiceFolder& service, const QVector<FolderConfiguration>& folders,
                       const QVector<FileConfiguration>& files, const Exclusion& exclusion)
    : _prefix(service.ServerPath(QString()) + (service.folder.serverPath.isEmpty() ? QString() : QStringLiteral("/"))) {
    for (const FolderConfiguration& folder : folders) {
        const QString path = _Accept(folder.serverPath, folder.name, true, exclusion);
        if (!path.isEmpty() && !_folders.insert(path).second) {
            _Refuse(path, QStringLiteral("the service has more than one entry of this name"));
        }
    }
    for (const FileConfiguration& file : files) {
        if (file.serverPath == service.folder.serverPath) {
            throw WrongFolder(QStringLiteral("\"%1\" is a file, and only folders can be synced").arg(file.serverPath));
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

bool RemoteTree::HasChecksums() const {
    return std::any_of(_files.begin(), _files.end(),
                       [](const FileConfiguration& file) { return !file.md5Checksum.isEmpty(); });
}

bool RemoteTree::IsRefused(const QString& path) const {
    if (_refusedPaths.isEmpty()) {
        return false;
    }
    for (QString above = path; !above.isEmpty(); above = FolderOf(above)) {
        if (_refusedPaths.contains(above)) {
            return true;
        }
    }
    return false;
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
    for (const QString& segment : names) {
        const QString reason = ReasonAgainst(segment);
        if (!reason.isEmpty()) {
            _Refuse(path, reason);
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
    for (auto folder = _folders.begin(); folder != _folders.end();) {
        folder = IsRefused(*folder) ? _folders.erase(folder) : std::next(folder);
    }
    for (auto file = _files.begin(); file != _files.end();) {
        file = IsRefused(file.key()) ? _files.erase(file) : std::next(file);
    }
}

}  // namespace pass
}  // namespace ovsync
