#include "client/sync/both/TwoWayPlan.h"

#include <algorithm>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace both {

using local::FolderOf;
using plan::FileView;
using plan::SyncStep;
using pull::PullOrder;

TwoWayPlan::Work TwoWayPlan::Find() {
    Work work;
    const auto reading = _views.KeepReading();
    for (const QString& path : _Paths()) {
        if (!_remote.IsRefused(path)) {
            _Take(_views.At(path), work);
        }
    }
    for (const PullOrder& order : work.fetches.orders) {
        for (QString folder = FolderOf(order.path); !folder.isEmpty(); folder = FolderOf(folder)) {
            work.needed.insert(folder);
        }
    }
    work.folders = _here.FindFolders(work.needed);
    work.sends = _there.Finish();
    work.needed += _there.NeededFolders();
    return work;
}

QStringList TwoWayPlan::_Paths() const {
    QStringList here = _views.PathsHere();
    const QStringList there = _remote.AllFiles().keys();
    QStringList paths;
    std::set_union(here.begin(), here.end(), there.begin(), there.end(), std::back_inserter(paths));
    return paths;
}

void TwoWayPlan::_Take(const FileView& view, Work& work) {
    switch (view.step) {
        case SyncStep::SendNew:
        case SyncStep::SendChanged:
            _there.Take(view);
            break;
        case SyncStep::SendOver:
            work.sentOver.insert(view.path);
            _here.Take(view, work.fetches);
            _there.Take(view);
            break;
        case SyncStep::Blocked:
        case SyncStep::DeleteThere:
            // Nothing can be sent into a folder that is something else there.
            if (view.situation.here == pass::LocalState::Folder) {
                _there.Block(view.path);
            }
            _here.Take(view, work.fetches);
            break;
        default:
            _here.Take(view, work.fetches);
            break;
    }
}

}  // namespace both
}  // namespace ovsync
