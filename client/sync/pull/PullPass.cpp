#include "client/sync/pull/PullPass.h"

#include <utility>

#include "client/sync/part/ScopedPass.h"
#include "client/sync/pull/Downloader.h"
#include "client/sync/pull/LocalDeletions.h"

namespace ovsync {
namespace pull {

using local::LocalSnapshot;
using part::ScopedPass;
using pass::FileComparison;
using pass::RecordMaker;
using pass::RemoteTree;
using pass::SyncPass;
using plan::Direction;
using plan::FileViews;
using report::SyncOutcome;

SyncOutcome PullPass::Run() {
    const auto join = [this](LocalSnapshot& snapshot, const SyncPass::Listing& listing) {
        _Pull(snapshot, listing);
        return QSet<QString>();
    };
    return ScopedPass(_pass, Direction::Pull, join).Run();
}

void PullPass::_Pull(LocalSnapshot& snapshot, const SyncPass::Listing& listing) {
    const RemoteTree& remote = *listing.tree;
    const RecordMaker maker(_sides.service, listing.at);
    const FileComparison comparison(_sides, maker);
    const FileViews views(_sides, comparison, remote, snapshot, _report, Direction::Pull);
    PullPlan plan(_sides, views, maker, remote, snapshot);
    LocalChanges changes(_sides, _pass.Installing(), _report, snapshot);
    LocalDeletions deletions(_sides, remote, changes, _report);

    PullPlan::Deletions gone = plan.FindGone();
    _sides.records.Write(gone.records);
    _report.Tell(gone.events);
    const bool deletes =
        _sides.options.deletes && deletions.MayDelete(gone.inTheWay.files.size() + gone.others.files.size());
    if (deletes) {
        deletions.Delete(std::move(gone.inTheWay));
    } else if (!_sides.options.deletes) {
        deletions.Keep(gone.inTheWay);
        deletions.Keep(gone.others);
    }

    const PullPlan::Folders folders = plan.FindFolders({});
    _sides.records.Write(folders.records);
    _report.Tell(folders.events);
    changes.MakeFolders(folders.missing);

    PullPlan::Fetches fetches = plan.FindFetches();
    _sides.records.Write(fetches.records);
    _report.Tell(fetches.events);
    const bool hasAll =
        Downloader(_sides, _pass.Installing(), comparison, maker, _report).Run(std::move(fetches.orders));

    PullPlan::Gone copies = plan.FindNeedlessCopies(_report.Open());
    if (hasAll) {
        deletions.Delete(std::move(copies));
    } else {
        deletions.Postpone(copies);
    }
    // What came under another name, or elsewhere, has to be here before it goes.
    if (deletes && hasAll) {
        deletions.Delete(std::move(gone.others));
    } else if (deletes) {
        deletions.PutOff(gone.others);
    }
    deletions.TellOfLimit(hasAll);
    _sides.records.Write(plan.FindEndedConflicts(_report.Open()));
}

}  // namespace pull
}  // namespace ovsync
