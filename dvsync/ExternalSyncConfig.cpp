#include "dvsync/ExternalSyncConfig.h"

namespace sync {
namespace dv {
namespace dvsync {

const QString ExternalSyncConfig::DefaultVersion = QLatin1String("0.0.0.0");

ExternalSyncConfig::ExternalSyncConfig() : syncFrequency(DefaultSyncFrequency), mostCurrentVersion(DefaultVersion) {}

ExternalSyncConfig::ExternalSyncConfig(const ExternalSyncConfig& other) : syncFrequency(0) {
    _CopyMembers(other);
}

ExternalSyncConfig& ExternalSyncConfig::operator=(const ExternalSyncConfig& other) {
    _CopyMembers(other);
    return *this;
}

ExternalSyncConfig::~ExternalSyncConfig() = default;

void ExternalSyncConfig::Clear() {
    _CopyMembers(ExternalSyncConfig());
}

void ExternalSyncConfig::_CopyMembers(const ExternalSyncConfig& other) {
    syncFrequency = other.syncFrequency;
    mostCurrentVersion = other.mostCurrentVersion;
    installerUrl = other.installerUrl;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
