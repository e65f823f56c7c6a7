#pragma once

#include "dvsync/ExternalSyncConfig.h"
#include "host/interfaces/IExternalSyncConfigManager.h"

namespace ovsync {
namespace library {

/// What a service published at the moment when it was asked, for whoever would ask it again for each value.
class PublishedConfig : public sync::interf::IExternalSyncConfigManager {
public:
    explicit PublishedConfig(const sync::dv::dvsync::ExternalSyncConfig& config) : _config(config) {}

    sync::dv::dvsync::ExternalSyncConfig GetExternalSyncConfig() override { return _config; }

private:
    const sync::dv::dvsync::ExternalSyncConfig _config;
};

}  // namespace library
}  // namespace ovsync
