#pragma once

#include <log4cplus/logger.h>

#include <QByteArray>
#include <QSet>
#include <memory>

#include "dvsync/DrovaneRemoteFolderManager.h"
#include "host/http/DAVPropfindResult.h"
#include "tests/fakes/InstalledConfiguration.h"

namespace sync {
namespace dv {
namespace dvsync {

class DrovaneRemoteFolderManagerAccess {
public:
    static bool Update(DrovaneRemoteFolderManager& manager, const QByteArray& body,
                       config::FolderConfiguration& folder) {
        return manager._UpdateFolderConfig(body, folder);
    }
    static std::shared_ptr<QVector<config::FolderConfiguration>> Build(DrovaneRemoteFolderManager& manager,
                                                                       const config::FolderConfiguration& folder,
                                                                       std::shared_ptr<http::DAVPropfindResult> result,
                                                                       QSet<int>& ignored) {
        return manager._BuildFolderConfigsFromFindResult(folder, std::move(result), ignored);
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace fuzz {

using FolderManagerAccess = sync::dv::dvsync::DrovaneRemoteFolderManagerAccess;

/// A folder manager that sends nothing, and logs nothing.
inline std::unique_ptr<sync::dv::dvsync::DrovaneRemoteFolderManager> MakeFolderManager() {
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    const tests::InstalledConfiguration installed;
    return std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(
        nullptr, 1, nullptr, nullptr,
        std::make_shared<tests::FakeConfigurationFactory>(installed.ServerConfigManager(),
                                                          installed.FileConfigManager()));
}

}  // namespace fuzz
