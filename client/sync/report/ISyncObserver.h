#pragma once

#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace report {

/// How far the transfers of a pass have come. A plain value.
struct SyncProgress {
    int doneFiles = 0;
    int allFiles = 0;
    qint64 doneBytes = 0;
    qint64 allBytes = 0;
};

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
