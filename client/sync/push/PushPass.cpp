#include "client/sync/push/PushPass.h"

#include <utility>

#include "client/sync/push/PushPlan.h"
#include "client/sync/push/Uploader.h"

namespace ovsync {
namespace push {

using local::LocalSnapshot;
using pass::FileComparison;
using pass::PassReport;
using pass::PassSides;
using pass::RecordMaker;
using pass::SyncPass;
using report::SyncOutcome;

SyncOutcome PushPass::Run() {
    return _pass.Run([this] { _Push(); });
}

void PushPass::_Push() {
    const PassSides& sides = _pass.Sides();
    PassReport& report = _pass.Report();
    const LocalSnapshot snapshot = _pass.Begin();
    report.Tell(snapshot.refused);
    const SyncPass::Listing listing = _pass.ListOrMake(snapshot);
    const RecordMaker maker(sides.service, listing.at);
    const FileComparison comparison(sides, maker);
    PushPlan::Work work = PushPlan(sides, comparison, maker, *listing.tree, snapshot, report).Find();
    sides.records.Write(work.records);
    report.Tell(work.events);
    Uploader(sides, comparison, maker, report).Run(work.folders, std::move(work.orders));
}

}  // namespace push
}  // namespace ovsync
