#pragma once

#include <log4cplus/logger.h>

#include <QString>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/interfaces/IVersionChecker.h"
#include "host/interfaces/IVersionManager.h"

namespace sync {
namespace dv {
namespace dvsync {

/// Compares the versions under which the service publishes the application: "KQ" + major digit + minor digit + "_" +
/// build number + "_WIN", anywhere in the text. Any other text is no version, a dotted one neither. Keeps its
/// collaborator for its whole life. Never throws. Logs as "version". As thread-safe as the version manager is.
class DVSYNC_EXPORT VersionChecker : public interf::IVersionChecker {
    Q_OBJECT

public:
    explicit VersionChecker(std::shared_ptr<interf::IVersionManager> versionManager);
    ~VersionChecker() override;

    /// False as well, with a log record, when the versions cannot be had or compared.
    bool ThereIsANewAppVersion(QString& mostCurrentVersion) override;

    /// Compares major numbers, then minor ones, then builds. False, with a log record, when either text is no version
    /// or its build number does not fit into an int.
    bool VersionAIsGreaterThanVersionB(QString versionA, QString versionB) override;

private:
    // The way in for tests to what no public operation reaches.
    friend class VersionCheckerAccess;

    bool _DottedVersionAIsGreaterThanDottedVersionB(const QString& versionA, const QString& versionB);

    static log4cplus::Logger _logger;

    std::shared_ptr<interf::IVersionManager> versionManager;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
