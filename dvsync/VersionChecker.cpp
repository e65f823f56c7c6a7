#include "dvsync/VersionChecker.h"

#include <log4cplus/loglevel.h>

#include <QRegExp>
#include <QStringList>
#include <utility>

#include "dvsync/CaughtException.h"
#include "dvsync/Filled.h"
#include "dvsync/Log.h"

namespace sync {
namespace dv {
namespace dvsync {

namespace {

const int PartCount = 4;

#define VERSION_LOG(level, text) DVSYNC_LOG(_logger, level, "VersionChecker", text)
#define VERSION_COMPARISON_LOG(complaint) \
    VERSION_LOG(                          \
        log4cplus::ERROR_LOG_LEVEL,       \
        Filled("Comparing two versions, \"versionA\" <%0> and \"versionB\" <%1>.  " complaint, versionA, versionB))

// A published version as "major.minor.build.0"; false when `version` is none.
bool ToDottedVersion(const QString& version, QString& dotted) {
    QRegExp published(Filled("(KQ)(\\d)(\\d)(_)(\\d+)(_%0)", QString(QLatin1String("WIN"))));
    published.indexIn(version);
    // Only the build number can fail: where nothing matched it is empty, and it may be too long for an int.
    bool isNumber = false;
    const int major = published.cap(2).toInt();
    const int minor = published.cap(3).toInt();
    const int build = published.cap(5).toInt(&isNumber);
    dotted = Filled("%0.%1.%2.0", QString::number(major), QString::number(minor), QString::number(build));
    return isNumber;
}

}  // namespace

log4cplus::Logger VersionChecker::_logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("version"));

VersionChecker::VersionChecker(std::shared_ptr<interf::IVersionManager> versionManager_)
    : versionManager(std::move(versionManager_)) {}

VersionChecker::~VersionChecker() = default;

bool VersionChecker::ThereIsANewAppVersion(QString& mostCurrentVersion) {
    try {
        const QString local = versionManager->GetLocalAppVersion();
        mostCurrentVersion = versionManager->GetMostCurrentAppVersion();
        VERSION_LOG(log4cplus::INFO_LOG_LEVEL, Filled("Check for new app version.  Local client is version <%0>; most "
                                                      "current version found from remote server query is <%1>.",
                                                      local, mostCurrentVersion));
        return VersionAIsGreaterThanVersionB(mostCurrentVersion, local);
    } catch (...) {
        VERSION_LOG(log4cplus::ERROR_LOG_LEVEL, TextOfCaughtException());
        return false;
    }
}

bool VersionChecker::VersionAIsGreaterThanVersionB(QString versionA, QString versionB) {
    QString dottedA;
    if (!ToDottedVersion(versionA, dottedA)) {
        VERSION_COMPARISON_LOG("\"versionA\" <%0> has incorrect format.");
        return false;
    }
    QString dottedB;
    if (!ToDottedVersion(versionB, dottedB)) {
        VERSION_COMPARISON_LOG("\"versionB\" <%1> has incorrect format.");
        return false;
    }
    return _DottedVersionAIsGreaterThanDottedVersionB(dottedA, dottedB);
}

bool VersionChecker::_DottedVersionAIsGreaterThanDottedVersionB(const QString& versionA, const QString& versionB) {
    const QStringList partsA = versionA.split(QLatin1Char('.'));
    if (partsA.size() != PartCount) {
        VERSION_COMPARISON_LOG("\"versionA\" <%0> is the incorrect length.");
        return false;
    }
    const QStringList partsB = versionB.split(QLatin1Char('.'));
    if (partsB.size() != PartCount) {
        VERSION_COMPARISON_LOG("\"versionB\" <%1> is the incorrect length.");
        return false;
    }
    for (int i = 0; i < PartCount; ++i) {
        bool isNumber = false;
        const int partA = partsA.at(i).toInt(&isNumber);
        if (!isNumber) {
            VERSION_COMPARISON_LOG("Cannot convert part of \"versionA\" <%0> to an int.");
            return false;
        }
        const int partB = partsB.at(i).toInt(&isNumber);
        if (!isNumber) {
            VERSION_COMPARISON_LOG("Cannot convert part of \"versionB\" <%1> to an int.");
            return false;
        }
        if (partA != partB) {
            return partA > partB;
        }
    }
    return false;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
