#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>
#include <optional>

#include "client/sync/local/Exclusion.h"

struct inotify_event;

namespace ovsync {
namespace agent {

/// Notices when something changes in a synced folder that a pass could be interested in. Watches folders, and no
/// files: a file counts as changed when whoever wrote it closes it. What is excluded or hidden, the temporary files of
/// passes, and synced folders inside this one are no concern of it. Not thread-safe.
class FolderWatcher {
public:
    FolderWatcher(const QString& root, const local::Exclusion& exclusion);
    ~FolderWatcher();
    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;

    /// Begins to watch, unless it does already. Look at Problem afterwards.
    void Watch();

    /// Can be read when there are changes to take; -1 when nothing is watched.
    int Descriptor() const { return _descriptor; }

    /// Takes what has happened, without waiting. True when something changed, or may have. When the root folder goes,
    /// it is not watched any more.
    bool TakeChanges();

    /// Whether among what TakeChanges took last somebody changed who may read or write in a folder.
    bool IsAccessChanged() const { return _isAccessChanged; }

    /// The paths of what TakeChanges took since this was called last: of files, and of folders with all that lies in
    /// them. None when it may be anything: the first time, and when events were lost or nothing was watched.
    std::optional<QSet<QString>> HandOutPaths();
    /// As if events were lost: what was handed out is to be looked at again.
    void Doubt() { _paths.reset(); }

    /// For people: why nothing is watched; empty when it is.
    const QString& Problem() const { return _problem; }

    /// How many folders are watched.
    int FolderCount() const { return _folders.size(); }

private:
    struct Folder {
        /// Its watch; -1 of the root.
        int parent;
        QByteArray name;
    };

    void _Stop(const QString& problem);
    /// With all folders in it. `parent` is -1 for the root.
    void _WatchTree(int parent, const QByteArray& name);
    /// -1 when the folder cannot be watched.
    int _WatchFolder(int parent, const QByteArray& name);
    /// As _WatchTree, unless the folder is watched already.
    void _WatchReadable(int parent, const QByteArray& name);
    void _ForgetTree(int parent, const QByteArray& name);
    void _Forget(int watch);
    bool _IsLeftAlone(int parent, const QByteArray& folder) const;
    /// Below the root, for which it is empty.
    QByteArray _PathOf(int watch) const;
    QByteArray _PathOf(int parent, const QByteArray& name) const;
    void _AddPath(const QByteArray& path);
    bool _IsConcernedBy(const inotify_event& event, const QByteArray& name);

    const QByteArray _root;
    const local::Exclusion _exclusion;
    int _descriptor = -1;
    int _rootWatch = -1;
    /// How often the watching came to an end.
    int _stops = 0;
    QString _problem;
    QHash<int, Folder> _folders;
    bool _isAccessChanged = false;
    /// What changed; none when that may be anything.
    std::optional<QSet<QString>> _paths;
};

}  // namespace agent
}  // namespace ovsync
