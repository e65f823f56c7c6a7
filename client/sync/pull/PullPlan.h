#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <deque>

#include "client/store/Placement.h"
#include "client/store/RecordChanges.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pass/RecordMaker.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/plan/FileViews.h"
#include "client/sync/pull/PullOrder.h"
#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace pull {

/// What is to be done here, found out file by file as SyncDecision says. Does none of it. Not thread-safe.
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

    /// The arguments outlive this object; `snapshot` and `remote` may change meanwhile.
    PullPlan(const pass::PassSides& sides, const plan::FileViews& views, const pass::RecordMaker& maker,
             const pass::RemoteTree& remote, const local::LocalSnapshot& snapshot)
        : _sides(sides), _views(views), _maker(maker), _remote(remote), _snapshot(snapshot) {}

    Deletions FindGone() const;
    /// Of a folder that was known, and was deleted here, a pass in both directions makes only what is in `needed`.
    Folders FindFolders(const QSet<QString>& needed) const;
    /// What the service has in the folders that are here, too.
    Fetches FindFetches();
    /// Adds what is to be done with one file.
    void Take(const plan::FileView& view, Fetches& fetches);

    /// Copies, as they came from the service, of conflicts that are over, which are not among the `open` paths of the
    /// pass; and those of older versions than that of another copy. To be asked for when everything was transferred.
    Gone FindNeedlessCopies(const QSet<QString>& open) const;
    /// The records of such copies that are gone, or files of their own. To be asked for last.
    store::RecordChanges FindEndedConflicts(const QSet<QString>& open) const;

private:
    void _FindGoneFile(const QString& path, Deletions& deletions) const;
    /// Whatever became of them here.
    QList<store::ConflictCopy> _NeedlessCopies(const QSet<QString>& open) const;
    bool _IsOver(const store::ConflictCopy& copy, const QSet<QString>& open) const;
    bool _IsOfVersionThere(const store::ConflictCopy& copy) const;
    bool _IsFileHere(const store::ConflictCopy& copy) const;

    const pass::PassSides& _sides;
    const plan::FileViews& _views;
    const pass::RecordMaker& _maker;
    const pass::RemoteTree& _remote;
    const local::LocalSnapshot& _snapshot;
    /// Of these a trial brings no copy, where the pass does.
    QSet<QString> _besideInTrial;
};

}  // namespace pull
}  // namespace ovsync
