#pragma once

#include <QHash>
#include <QString>
#include <QVector>
#include <exception>
#include <functional>
#include <optional>

#include "client/store/ConflictCopy.h"
#include "client/store/Placement.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/local/Trash.h"
#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace local {

/// Puts finished temporary files in their places and takes files away, so that a crash at any moment loses nothing: the
/// intention is on the disk before anything is touched, and what a file of this side held is only removed when it is
/// known to be what its record says. Throws StoreError. Not thread-safe.
class Installer {
public:
    enum class Result {
        Done,
        /// Nothing was done: what is there is not what was expected. A new file's temporary file is still there.
        Occupied,
        /// The disk refused. The next Recover clears up.
        Failed
    };

    struct Request {
        /// Its record's fingerprint is that of the temporary file, and has become that of the target when it is done.
        store::Placement placement;
        Result result = Result::Failed;
        /// Where the file went that was written in the very moment in which it was replaced or removed; empty mostly.
        QString aside;
        /// The LocalError of the disk; null unless it refused.
        std::exception_ptr error;
    };

    /// The arguments outlive this object.
    Installer(ILocalTree& tree, store::RecordDatabase& records, Trash& trash)
        : _tree(tree), _records(records), _trash(trash) {}

    /// Carries the requests out and updates the records of those that are done. Throws LocalError only when the disk as
    /// a whole fails.
    void Install(QVector<Request>& requests);

    /// Finishes or takes back what a pass that died had begun. Only what lies in its place counts as done: what is not
    /// there proves nothing. Returns what a person should know. Throws LocalError when the disk as a whole fails.
    [[nodiscard]] QVector<report::SyncEvent> Recover();

    /// Takes away a temporary file that nobody waits for any more. What may be more than a part of a download goes to
    /// the trash. Throws LocalError.
    void ClearUp(const QString& temporary);

    /// Puts the file at `temporary`, a version of the one at `path`, into the trash. Throws LocalError.
    void Discard(const QString& temporary, const QString& path) { _trash.Take(temporary, path); }

    /// Gives the file at `temporary` a name that says that it is a version, described by `note`, of the one at
    /// `copy.path`, and records it. Returns that name; it may be one that a file with the same content had already. A
    /// crash leaves no copy that is not recorded beyond the next Recover. Throws LocalError.
    [[nodiscard]] QString PutBeside(const QString& temporary, store::ConflictCopy copy, const QString& note);

private:
    /// Nothing is left of the requests when that fails.
    void _RecordIntentions(const QVector<Request>& requests);
    void _RemoveUseless(const QString& temporary);
    void _Install(Request& request);
    /// Flushes to the disk the names in the folders that something was done in.
    void _SyncFolders(QVector<Request>& requests);
    Result _Put(Request& request);
    Result _Remove(Request& request);
    /// As PutBeside, without a record. `onName` is called with each name before it is given.
    QString _GiveName(const QString& temporary, const QString& path, const QString& note,
                      const std::function<void(const QString& name)>& onName);
    /// Takes away a copy of which a pass that died has not recorded what it is.
    void _RecoverCopy();
    QString _KeepReplaced(const QString& temporary, const QString& path);
    /// Returns the name that a file was given that somebody wrote meanwhile; empty mostly.
    QString _Recover(const store::Placement& placement);
    bool _HasSameContent(const QString& a, const QString& b);
    /// The fingerprint to be recorded of the file at `path`, whose content `fresh` was put there.
    store::Fingerprint _Placed(const QString& path, const store::Fingerprint& fresh);

    ILocalTree& _tree;
    store::RecordDatabase& _records;
    Trash& _trash;
    /// Of temporary files that are not where a pass that died had them, by their names: where they were to be placed.
    QHash<QString, QString> _lost;
};

}  // namespace local
}  // namespace ovsync
