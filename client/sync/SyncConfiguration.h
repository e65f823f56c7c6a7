#pragma once

#include "dvsync/DrovaneSyncServiceManager.h"

namespace ovsync {
namespace syncing {

/// How this client synchronises: what the library says, and of its own the numbers below. Thread-safe.
class SyncConfiguration : public sync::dv::dvsync::DrovaneSyncServiceManager {
public:
    using DrovaneSyncServiceManager::DrovaneSyncServiceManager;

    /// 4: more at once gain little against one server, and take its connections from others.
    int GetMaxParallelTransfers() override { return 4; }

    /// 2, which outlasts a server that restarts, and not one that is down.
    int GetMaxTransferRetries() override { return 2; }

    /// 3
    int GetMaxFailedPasses() override { return 3; }
};

}  // namespace syncing
}  // namespace ovsync
