#pragma once

#include "client/sync/report/SyncEvent.h"
#include "client/sync/report/SyncProgress.h"

namespace ovsync {
namespace report {

/// Is told what a pass does, on the pass's thread.
class ISyncObserver {
public:
    virtual ~ISyncObserver() = default;

    virtual void OnEvent(const SyncEvent& event) = 0;
    /// Several times a second while files are transferred, and once more at the end.
    virtual void OnProgress(const SyncProgress& progress) = 0;
};

}  // namespace report
}  // namespace ovsync
