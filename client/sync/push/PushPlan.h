#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <deque>

#include "client/store/RecordChanges.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pass/RecordMaker.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/plan/FileViews.h"
#include "client/sync/push/PushOrder.h"
#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace push {

/// What is to be done on the service, found out file by file as SyncDecision says. Does none of it. Not thread-safe.
class PushPlan {
public:
    /// What is on the service and was deleted here.
    struct Gone {
        std::deque<PushOrder> files;
        /// A folder comes before those in it.
        QStringList folders;
    };

    struct Deletions {
        /// What stands in the way of files and folders of this side, which have the same name; it goes first.
        Gone inTheWay;
        Gone others;
    };

    struct Work {
        /// To be made on the service. A folder comes before those in it.
        QStringList folders;
        std::deque<PushOrder> orders;
        store::RecordChanges records;
        QVector<report::SyncEvent> events;
        /// What is another version there than the recorded one, which nobody tells again.
        QStringList open;

        /// The paths of all that is to be sent.
        QSet<QString> Sent() const;
    };

    /// The arguments outlive this object; `snapshot` and `remote` may change meanwhile.
    PushPlan(const pass::PassSides& sides, const plan::FileViews& views, const pass::RecordMaker& maker,
             const pass::RemoteTree& remote, const local::LocalSnapshot& snapshot);

    Deletions FindGone() const;

    /// Takes all files that are here, or that have a record. To be called once.
    Work Find();

    /// Adds what is to be done with one file.
    void Take(const plan::FileView& view);
    /// Neither `path` nor what lies in it can be sent.
    void Block(const QString& path) { _blockedFolders.insert(path); }
    /// The folders above `path` have to be there.
    void NeedFoldersOf(const QString& path);
    /// Adds the folders, and returns all that was added. To be called once.
    Work Finish();
    /// The folders in which something lies that is to be sent.
    const QSet<QString>& NeededFolders() const { return _neededFolders; }

private:
    void _Order(const plan::FileView& view);
    /// When the second in which `remote` was changed is over, if its date alone tells it and it was the listing's.
    std::chrono::steady_clock::time_point _EndOfSecondOf(const sync::config::FileConfiguration& remote) const;
    void _FindGoneFolders(Deletions& deletions) const;
    void _FindForgottenFolders();
    void _FindFolders();
    void _Tell(report::SyncEvent::Kind kind, const QString& path, const QString& detail = QString());

    const pass::PassSides& _sides;
    const plan::FileViews& _views;
    const pass::RecordMaker& _maker;
    const pass::RemoteTree& _remote;
    const local::LocalSnapshot& _snapshot;
    QSet<QString> _knownFolders;
    QSet<QString> _neededFolders;
    QSet<QString> _blockedFolders;
    Work _work;
};

}  // namespace push
}  // namespace ovsync
