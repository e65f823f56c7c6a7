#include "client/sync/both/TwoWayPass.h"

#include <algorithm>
#include <utility>

#include "client/sync/both/Moves.h"
#include "client/sync/both/TwoWayPlan.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/part/ScopedPass.h"
#include "client/sync/pull/Downloader.h"
#include "client/sync/pull/LocalDeletions.h"
#include "client/sync/push/RemoteDeletions.h"
#include "client/sync/push/Uploader.h"

namespace ovsync {
namespace both {

using local::FolderOf;
using local::LocalSnapshot;
using part::ScopedPass;
using pass::FileComparison;
using pass::RecordMaker;
using pass::RemoteTree;
using pass::SyncPass;
using plan::Direction;
using plan::FileViews;
using pull::Downloader;
using pull::LocalChanges;
using pull::LocalDeletions;
using pull::PullOrder;
using pull::PullPlan;
using push::PushOrder;
using push::PushPlan;
using push::RemoteDeletions;
using push::Uploader;
using report::SyncEvent;
using report::SyncOutcome;

namespace {

template <typename Order, typename Predicate>
void RemoveIf(std::deque<Order>& orders, Predicate predicate) {
    orders.erase(std::remove_if(orders.begin(), orders.end(), predicate), orders.end());
}

void LeaveOut(QStringList& folders, const QSet<QString>& needed) {
    const auto isNeeded = [&needed](const QString& path) { return needed.contains(path); };
    folders.erase(std::remove_if(folders.begin(), folders.end(), isNeeded), folders.end());
}

}  // namespace

SyncOutcome TwoWayPass::Run() {
    const auto join = [this](LocalSnapshot& snapshot, SyncPass::Listing& listing) { return _Join(snapshot, listing); };
    return ScopedPass(_pass, Direction::Both, join, _changedHere).Run();
}

QSet<QString> TwoWayPass::_Join(LocalSnapshot& snapshot, SyncPass::Listing& listing) {
    RemoteTree& remote = *listing.tree;
    _report.Tell(remote.LeaveOutLinks(snapshot));
    const RecordMaker maker(_sides.service, listing.at);
    const FileComparison comparison(_sides, maker);
    LocalChanges changes(_sides, _pass.Installing(), _report, snapshot);
    Moves moves(_sides, comparison, maker, snapshot, remote, _pass.Scope(), changes, _report);
    moves.CarryOut();
    const FileViews views(_sides, comparison, remote, snapshot, _report, Direction::Both);
    PullPlan here(_sides, views, maker, remote, snapshot);
    PushPlan there(_sides, views, maker, remote, snapshot);
    LocalDeletions deletionsHere(_sides, remote, changes, _report);
    RemoteDeletions deletionsThere(_sides, comparison, maker, snapshot, remote, _report);

    PullPlan::Deletions goneThere = here.FindGone();
    _sides.records.Write(goneThere.records);
    PushPlan::Deletions goneHere = there.FindGone();
    if (!deletionsHere.MayDelete(goneThere.inTheWay.files.size() + goneThere.others.files.size())) {
        goneThere = PullPlan::Deletions();
    }
    const size_t fromService = goneHere.inTheWay.files.size() + goneHere.others.files.size();
    if (!deletionsThere.MayDelete(static_cast<int>(fromService))) {
        goneHere = PushPlan::Deletions();
    }
    deletionsThere.ClearUp();
    deletionsHere.Delete(std::move(goneThere.inTheWay));
    deletionsThere.Delete(goneHere.inTheWay);

    TwoWayPlan::Work work = TwoWayPlan(views, remote, here, there).Find();
    for (const store::RecordChanges& records : {work.fetches.records, work.folders.records, work.sends.records}) {
        _sides.records.Write(records);
    }
    for (const QVector<SyncEvent>& events : {work.fetches.events, work.folders.events, work.sends.events}) {
        _report.Tell(events);
    }

    changes.MakeFolders(work.folders.missing);
    RemoveIf(work.fetches.orders, [&](const PullOrder& order) { return !snapshot.HasFolder(FolderOf(order.path)); });
    Downloader downloader(_sides, _pass.Installing(), comparison, maker, _report);
    const bool hasFetched = downloader.Run(std::move(work.fetches.orders));

    RemoveIf(work.sends.orders, [&](const PushOrder& order) {
        return work.sentOver.contains(order.path) && !downloader.InTrash().contains(order.path);
    });
    QSet<QString> sent = work.sends.Sent();
    const bool hasSent = Uploader(_sides, comparison, maker, _report).Run(work.sends.folders, work.sends.orders);

    // What came or went under another name, or elsewhere, has to be on both sides before it goes.
    LeaveOut(goneThere.others.folders, work.needed);
    LeaveOut(goneHere.others.folders, work.needed);
    // Folders that the service deleted cannot go before.
    PullPlan::Gone copies = here.FindNeedlessCopies(_report.Open());
    if (hasFetched && hasSent) {
        deletionsHere.Delete(std::move(copies));
        deletionsHere.Delete(std::move(goneThere.others));
        deletionsThere.Delete(goneHere.others);
    } else {
        deletionsHere.Postpone(copies);
        deletionsHere.PutOff(goneThere.others);
        deletionsThere.PutOff(goneHere.others);
    }
    deletionsHere.TellOfLimit(hasFetched && hasSent);
    deletionsThere.TellOfLimit(hasFetched && hasSent);
    _sides.records.Write(here.FindEndedConflicts(_report.Open()));
    moves.RememberFolders();
    return sent;
}

}  // namespace both
}  // namespace ovsync
