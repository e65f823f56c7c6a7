#pragma once

#include <QObject>
#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// Compares application versions. Never throws. The order of the operations is part of the contract.
class OVSYNC_INTERFACES_EXPORT IVersionChecker : public QObject {
    Q_OBJECT

public:
    /// Whether the service offers a newer application; `mostCurrentVersion` receives the version it offers in any case.
    virtual bool ThereIsANewAppVersion(QString& mostCurrentVersion) = 0;

    /// False as well when either text is no version.
    virtual bool VersionAIsGreaterThanVersionB(QString versionA, QString versionB) = 0;
};

}  // namespace interf
}  // namespace sync
