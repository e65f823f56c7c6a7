#pragma once

#include <QString>

#include "dvsync/DvsyncExport.h"

namespace sync {
namespace dv {
namespace dvsync {

/// What the service tells every installed client. A plain value; the order of the fields is part of the contract.
class DVSYNC_EXPORT ExternalSyncConfig {
public:
    static const qint32 DefaultSyncFrequency = 180;
    /// "0.0.0.0"
    static const QString DefaultVersion;

    ExternalSyncConfig();
    ExternalSyncConfig(const ExternalSyncConfig& other);
    ExternalSyncConfig& operator=(const ExternalSyncConfig& other);
    virtual ~ExternalSyncConfig();

    /// Puts every field back to its default.
    void Clear();

    /// How often to synchronise, in the scheduler's unit.
    qint32 syncFrequency;
    /// The newest version of the application, in the form that VersionChecker reads.
    QString mostCurrentVersion;
    /// Where the installer of that version is; empty by default.
    QString installerUrl;

protected:
    void _CopyMembers(const ExternalSyncConfig& other);
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
