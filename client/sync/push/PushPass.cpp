#include "client/sync/push/PushPass.h"

#include <utility>

#include "client/sync/part/ScopedPass.h"
#include "client/sync/push/PushPlan.h"
#include "client/sync/push/RemoteDeletions.h"
#include "client/sync/push/Uploader.h"

namespace ovsync {
namespace push {

using local::LocalSnapshot;
using part::ScopedPass;
using pass::FileComparison;
using pass::PassReport;
using pass::PassSides;
using pass::RecordMaker;
using pass::SyncPass;
using plan::Direction;
using plan::FileViews;
using report::SyncOutcome;

SyncOutcome PushPass::Run() {
    const auto join = [this](const LocalSnapshot& snapshot, SyncPass::Listing& listing) {
        return _Push(snapshot, listing);
    };
    return ScopedPass(_pass, Direction::Push, join).Run();
}

QSet<QString> PushPass::_Push(const LocalSnapshot& snapshot, SyncPass::Listing& listing) {
    const PassSides& sides = _pass.Sides();
    PassReport& report = _pass.Report();
    report.Tell(listing.tree->LeaveOutLinks(snapshot));
    const RecordMaker maker(sides.service, listing.at);
    const FileComparison comparison(sides, maker);
    const FileViews views(sides, comparison, *listing.tree, snapshot, report, Direction::Push);
    PushPlan plan(sides, views, maker, *listing.tree, snapshot);
    RemoteDeletions deletions(sides, comparison, maker, snapshot, *listing.tree, report);
    PushPlan::Deletions gone;
    if (sides.options.deletes) {
        deletions.ClearUp();
        gone = plan.FindGone();
        const size_t count = gone.inTheWay.files.size() + gone.others.files.size();
        gone = deletions.MayDelete(static_cast<int>(count)) ? std::move(gone) : PushPlan::Deletions();
    }
    deletions.Delete(gone.inTheWay);

    PushPlan::Work work = plan.Find();
    sides.records.Write(work.records);
    report.Tell(work.events);
    for (const QString& path : qAsConst(work.open)) {
        report.LeaveOpen(path);
    }
    QSet<QString> sent = work.Sent();
    const bool hasAll = Uploader(sides, comparison, maker, report).Run(work.folders, std::move(work.orders));

    if (hasAll) {
        deletions.Delete(gone.others);
    } else {
        deletions.PutOff(gone.others);
    }
    deletions.TellOfLimit(hasAll);
    return sent;
}

}  // namespace push
}  // namespace ovsync
