#pragma once

#include <QHash>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <set>

#include "client/sync/local/Exclusion.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/ServiceFolder.h"
#include "client/sync/report/SyncEvent.h"
#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace pass {

/// What a listing says lies in the service's folder, as far as it can lie in a synced folder: whatever a server sends,
/// every path here leads to a place below it. Not thread-safe.
class RemoteTree {
public:
    using Files = QMap<QString, sync::config::FileConfiguration>;

    /// What lies in something that the listing does not have (a form) is left out. Throws SyncException when the
    /// listing is that of a file.
    RemoteTree(const ServiceFolder& service, const QVector<sync::config::FolderConfiguration>& folders,
               const QVector<sync::config::FileConfiguration>& files, const local::Exclusion& exclusion);

    /// Takes out what, by its folded path, is the same as another entry or as a path in `local` that it does not equal.
    void RefuseClashes(const QStringList& local, bool tellsCaseApart, bool tellsFormsApart);

    /// Takes out what lies at and below `path`: nobody knows what to make of it. Tells of nothing.
    void LeaveOut(const QString& path);

    /// Takes out what lies at and below every place where neither a file nor a folder is here, and returns what is to
    /// be told of these.
    [[nodiscard]] QVector<report::SyncEvent> LeaveOutLinks(const local::LocalSnapshot& snapshot);

    /// There is a folder at `path` now.
    void AddFolder(const QString& path) { _folders.insert(path); }

    /// What was at `from`, with everything in it, is at `to` now, where nothing was; on the service at `serverTo` in
    /// place of `serverFrom`.
    void Move(const QString& from, const QString& to, const QString& serverFrom, const QString& serverTo);

    /// Whether what was at or above `path` was moved elsewhere.
    bool WasMoved(const QString& path) const;

    /// There is nothing at `path` any more, which was a file or an empty folder.
    void Forget(const QString& path);

    /// By their paths, in path order, so that a folder comes before what lies in it.
    const Files& AllFiles() const { return _files; }
    /// In path order. Without the service's folder itself.
    const std::set<QString>& AllFolders() const { return _folders; }

    /// By which the service knows the folder, wherever it lies; empty where it has no ids.
    QString FolderId(const QString& path) const { return _folderIds.value(path); }
    /// Empty when there is none.
    QString FolderOfId(const QString& itemId) const;
    /// The paths of the files that have an id, by this, without those in `left`.
    QHash<QString, QString> FilesById(const QSet<QString>& left) const;

    /// Whether any file has a checksum, as the service's have.
    bool HasChecksums() const { return _hasChecksums; }
    /// The files of the service are known to have checksums.
    void ExpectChecksums() { _hasChecksums = true; }
    bool HasFile(const QString& path) const { return _files.contains(path); }
    bool HasFolder(const QString& path) const { return path.isEmpty() || _folders.count(path) != 0; }
    /// Whether the listing had something at `path`, or above it, that was refused: nobody knows what is there.
    bool IsRefused(const QString& path) const;

    /// Whether that is so of anything below `path`.
    bool HasRefusedBelow(const QString& path) const;

    const QVector<report::SyncEvent>& Refused() const { return _refused; }

    /// The places that nobody looks at, and whether the service has anything at or below them.
    const QSet<QString>& RefusedPaths() const { return _refusedPaths; }
    bool HasLeftOut() const { return _hasLeftOut; }
    /// The folders that a pass has moved out of the way to delete them. They are left out otherwise.
    const QStringList& Temporaries() const { return _temporaries; }

private:
    /// The path below the service's folder of the entry `name` at `serverPath`; empty when it is left out.
    QString _Accept(const QString& serverPath, const QString& name, bool isFolder, const local::Exclusion& exclusion);
    void _Refuse(const QString& path, const QString& reason);
    /// Takes out what was accepted before it turned out to be refused.
    void _RemoveRefused();

    const QString _prefix;
    Files _files;
    std::set<QString> _folders;
    QHash<QString, QString> _folderIds;
    bool _hasChecksums = false;
    QSet<QString> _refusedPaths;
    QSet<QString> _moved;
    bool _hasLeftOut = false;
    QVector<report::SyncEvent> _refused;
    QStringList _temporaries;
};

}  // namespace pass
}  // namespace ovsync
