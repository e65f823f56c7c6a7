#pragma once

#include <QHash>
#include <QMultiHash>
#include <QSet>
#include <QString>

#include "client/store/FolderRecord.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/pull/LocalChanges.h"

namespace ovsync {
namespace both {

/// Finds what was renamed or moved on one side, here by what the file system knows it by and by its content, there by
/// its id, and moves it on the other side, with its records. Where both sides moved it the service's place counts. What
/// cannot be moved is left to be transferred and deleted. Brings the snapshot, the listing and the scope up to date.
/// For one pass. Not thread-safe.
class Moves {
public:
    /// The arguments outlive this object.
    Moves(const pass::PassSides& sides, const pass::FileComparison& comparison, const pass::RecordMaker& maker,
          local::LocalSnapshot& snapshot, pass::RemoteTree& remote, pass::PassScope& scope, pull::LocalChanges& changes,
          pass::PassReport& report)
        : _sides(sides),
          _comparison(comparison),
          _maker(maker),
          _snapshot(snapshot),
          _remote(remote),
          _scope(scope),
          _changes(changes),
          _report(report) {}

    /// Folders first, so that what lies in one that was moved is not moved by itself.
    void CarryOut();

    /// Records by what each folder is known on both sides from now on.
    void RememberFolders();

private:
    /// Where something with a record lies now; empty where nobody knows.
    struct Places {
        QString here;
        QString there;
    };

    bool _MoveAFolder();
    void _MoveFiles();
    /// False when it cannot be moved, and has to be transferred.
    bool _Move(const QString& path, const Places& now, bool isFolder);
    bool _MoveHere(const QString& from, const QString& to);
    bool _MoveThere(const QString& from, const QString& to, bool isFolder);
    /// Makes the folders above `path` where they are missing.
    bool _HasFoldersHere(const QString& path);
    bool _HasFoldersThere(const QString& path);
    void _RequestMove(const QString& from, const QString& to, bool isFolder);

    QString _FolderHere(const store::FolderRecord& folder, const QMultiHash<quint64, QString>& unknown) const;
    QString _FileHere(const store::FileRecord& record, const QMultiHash<quint64, QString>& unknown) const;
    /// What is here and not among `known`, by what the file system knows it by.
    QMultiHash<quint64, QString> _UnknownHere(const QSet<QString>& known, local::LocalEntry::Kind kind) const;
    /// Whether `path` may be moved at all.
    bool _IsSynced(const QString& path, bool isFolder) const;

    const pass::PassSides& _sides;
    const pass::FileComparison& _comparison;
    const pass::RecordMaker& _maker;
    local::LocalSnapshot& _snapshot;
    pass::RemoteTree& _remote;
    pass::PassScope& _scope;
    pull::LocalChanges& _changes;
    pass::PassReport& _report;
};

}  // namespace both
}  // namespace ovsync
