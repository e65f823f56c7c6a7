#pragma once

#include <QString>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/interfaces/IExternalSyncConfigManager.h"
#include "host/interfaces/ISyncConfiguration.h"

namespace sync {
namespace dv {
namespace dvsync {

/// How synchronisation against Drovane is tuned: fixed values, whatever the service publishes. Abstract: the client
/// derives the class that it makes an object of, with the operations of ISyncConfiguration that are its own.
/// Thread-safe.
class DVSYNC_EXPORT DrovaneSyncServiceManager : public interf::ISyncConfiguration {
public:
    /// Keeps `externalConfig` for its whole life and does not ask it.
    explicit DrovaneSyncServiceManager(std::shared_ptr<interf::IExternalSyncConfigManager> externalConfig);
    ~DrovaneSyncServiceManager() override;

    int GetSyncFrequency() override;
    bool IsIncrementalSyncEnabled() override;
    bool IsIncrementalSyncEnabledForFile(const QString& path) override;
    qint64 GetMinFileSizeForIncrementalSync() override;
    float GetMaxChangeForIncrementalSync() override;
    float GetMaxDeltaForIncrementalSync() override;

    /// There are no limits: these return false and leave the arguments as they are.
    bool GetLimitsForUploadFinishedEvent(int& maxFiles, int& maxDelay) override;
    bool GetLimitsForCreateDeleteReferences(int& maxCreated, int& maxDeleted, int& maxDelay, bool initialSync) override;
    bool GetLimitsForGetParentsChildrenReferences(int& maxParents, int& maxChildren, bool initialSync) override;

    int GetSyncDelayAfterServerError() override;

private:
    std::shared_ptr<interf::IExternalSyncConfigManager> _externalConfig;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
