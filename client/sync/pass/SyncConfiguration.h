#pragma once

#include "client/sync/pass/SyncOptions.h"
#include "dvsync/DrovaneSyncServiceManager.h"

namespace ovsync {
namespace pass {

/// How this client synchronises: what the library says, and of its own what its passes do. Thread-safe.
class SyncConfiguration : public sync::dv::dvsync::DrovaneSyncServiceManager {
public:
    using DrovaneSyncServiceManager::DrovaneSyncServiceManager;

    /// Unless the user says otherwise.
    int GetMaxParallelTransfers() override { return SyncOptions().transfers; }

    /// 0: what failed is left to the next pass.
    int GetMaxTransferRetries() override { return 0; }

    /// 0: each pass tells at its end what failed.
    int GetMaxFailedPasses() override { return 0; }
};

}  // namespace pass
}  // namespace ovsync
