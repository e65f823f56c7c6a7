#include "client/sync/push/PushPass.h"

#include "client/sync/push/PushPlan.h"
#include "client/sync/push/Uploader.h"

namespace ovsync {
namespace push {

using local::LocalSnapshot;
using pass::RemoteTree;
using report::SyncEvent;
using report::SyncOutcome;

SyncOutcome PushPass::Run() {
    return _context.Run([this] { _Push(); });
}

void PushPass::_Push() {
    const LocalSnapshot snapshot = _context.Begin();
    for (const SyncEvent& event : snapshot.refused) {
        _context.Report(event);
    }
    // Without a condition, which always gives a listing.
    const std::optional<RemoteTree> remote = _context.List(QDateTime(), snapshot);
    std::deque<PushOrder> orders = PushPlan(_context, *remote, snapshot).FindOrders();
    if (!_context.Options().isDryRun) {
        Uploader(_context).Run(std::move(orders));
        return;
    }
    for (const PushOrder& order : orders) {
        _context.Report(SyncEvent::Kind::Sent, order.path, QString(), order.size);
    }
}

}  // namespace push
}  // namespace ovsync
