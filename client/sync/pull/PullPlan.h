#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <deque>

#include "client/store/Placement.h"
#include "client/store/RecordChanges.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/pull/PullOrder.h"

namespace ovsync {
namespace pull {

/// What a pull has to do, found out file by file as PullDecision says. Does none of it, and tells of nothing but what
/// could not be compared. Not thread-safe.
class PullPlan {
public:
    /// What is here and not on the service any more.
    struct Gone {
        QVector<store::Placement> files;
        /// A folder comes before those in it.
        QStringList folders;
    };

    struct Deletions {
        /// What stands in the way of files and folders of the service, which have the same name; it goes first.
        Gone inTheWay;
        Gone others;
        store::RecordChanges records;
        QVector<report::SyncEvent> events;
    };

    struct Folders {
        /// To be made. A folder comes before those in it.
        QStringList missing;
        store::RecordChanges records;
        QVector<report::SyncEvent> events;
    };

    struct Fetches {
        std::deque<PullOrder> orders;
        store::RecordChanges records;
        QVector<report::SyncEvent> events;
    };

    /// The arguments outlive this object.
    PullPlan(const pass::PassSides& sides, const pass::FileComparison& comparison, const pass::RecordMaker& maker,
             const pass::RemoteTree& remote, pass::PassReport& report);

    Deletions FindGone(const local::LocalSnapshot& snapshot);
    Folders FindFolders(const local::LocalSnapshot& snapshot) const;
    /// What the service has in the folders that `snapshot` has, too.
    Fetches FindFetches(const local::LocalSnapshot& snapshot);

    /// The records of copies of conflicts that are over, and that nobody has here any more. To be asked for when
    /// everything was fetched.
    store::RecordChanges FindEndedConflicts() const;

private:
    void _FindGoneFile(const QString& path, const local::LocalSnapshot& snapshot, Deletions& deletions);
    void _Decide(const QString& path, const sync::config::FileConfiguration& remote,
                 const local::LocalSnapshot& snapshot, Fetches& fetches);
    /// The path of the copy of that version; empty when there is none.
    QString _CopyBeside(const QString& path, const sync::config::FileConfiguration& remote) const;

    const pass::PassSides& _sides;
    const pass::FileComparison& _comparison;
    const pass::RecordMaker& _maker;
    const pass::RemoteTree& _remote;
    pass::PassReport& _report;
    /// The copies by their identities, by the paths of the files that they are versions of.
    QHash<QString, QHash<QString, QString>> _besideAlready;
    QSet<QString> _inConflict;
};

}  // namespace pull
}  // namespace ovsync
