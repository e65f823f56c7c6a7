#include "dvsync/DrovaneSyncServiceManager.h"

#include <utility>

namespace sync {
namespace dv {
namespace dvsync {

DrovaneSyncServiceManager::DrovaneSyncServiceManager(std::shared_ptr<interf::IExternalSyncConfigManager> externalConfig)
    : _externalConfig(std::move(externalConfig)) {}

DrovaneSyncServiceManager::~DrovaneSyncServiceManager() = default;

int DrovaneSyncServiceManager::GetSyncFrequency() {
    return 180;
}

bool DrovaneSyncServiceManager::IsIncrementalSyncEnabled() {
    return true;
}

bool DrovaneSyncServiceManager::IsIncrementalSyncEnabledForFile(const QString& /*path*/) {
    return true;
}

qint64 DrovaneSyncServiceManager::GetMinFileSizeForIncrementalSync() {
    return 102400;
}

float DrovaneSyncServiceManager::GetMaxChangeForIncrementalSync() {
    return 0.5F;
}

float DrovaneSyncServiceManager::GetMaxDeltaForIncrementalSync() {
    return 0.7F;
}

bool DrovaneSyncServiceManager::GetLimitsForUploadFinishedEvent(int& /*maxFiles*/, int& /*maxDelay*/) {
    return false;
}

bool DrovaneSyncServiceManager::GetLimitsForCreateDeleteReferences(int& /*maxCreated*/, int& /*maxDeleted*/,
                                                                   int& /*maxDelay*/, bool /*initialSync*/) {
    return false;
}

bool DrovaneSyncServiceManager::GetLimitsForGetParentsChildrenReferences(int& /*maxParents*/, int& /*maxChildren*/,
                                                                         bool /*initialSync*/) {
    return false;
}

int DrovaneSyncServiceManager::GetSyncDelayAfterServerError() {
    return 0;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
