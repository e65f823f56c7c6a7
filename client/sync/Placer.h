#pragma once

#include <QString>
#include <QVector>
#include <optional>

#include "client/store/Placement.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/ILocalTree.h"
#include "client/sync/SyncEvent.h"

namespace ovsync {
namespace syncing {

/// Puts finished temporary files in their places and takes files away, so that a crash at any moment loses nothing: the
/// intention is on the disk before anything is touched, and what a file of this side held is only removed when it is
/// known to be what its record says. Throws StoreError. Not thread-safe.
class Placer {
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
        /// What the disk said; empty unless it refused.
        QString error;
    };

    Placer(ILocalTree& tree, store::RecordDatabase& records) : _tree(tree), _records(records) {}

    /// Carries the requests out and updates the records of those that are done. Throws LocalError only when the disk as
    /// a whole fails.
    void Carry(QVector<Request>& requests);

    /// Finishes or takes back what a pass that died had begun. Returns what a person should know. Throws LocalError.
    QVector<SyncEvent> Recover();

    /// Gives the file at `temporary` a name that says that it is a version, described by `note`, of the one at `path`.
    /// Returns that name; it may be one that a file with the same content had already. Throws LocalError.
    QString PutBeside(const QString& temporary, const QString& path, const QString& note);

private:
    void _Carry(Request& request);
    Result _Place(Request& request);
    Result _Remove(Request& request);
    QString _PutAside(const QString& temporary, const QString& path);
    void _Recover(const store::Placement& placement, QVector<SyncEvent>& events);
    bool _HasSameContent(const QString& a, const QString& b);
    /// The fingerprint to be recorded of the file at `path`, whose content `fresh` was put there.
    store::Fingerprint _Placed(const QString& path, const store::Fingerprint& fresh);

    ILocalTree& _tree;
    store::RecordDatabase& _records;
};

}  // namespace syncing
}  // namespace ovsync
