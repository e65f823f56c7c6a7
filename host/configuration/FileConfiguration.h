#pragma once

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include "host/configuration/FileLink.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace config {

/// One synced file. A plain value; a default-constructed one stands for "nothing found". The order of the fields is
/// part of the contract. Not thread-safe.
class OVSYNC_CONFIGURATION_EXPORT FileConfiguration {
public:
    FileConfiguration();
    FileConfiguration(const FileConfiguration& other);
    FileConfiguration(FileConfiguration&& other) noexcept;
    FileConfiguration& operator=(const FileConfiguration& other);
    FileConfiguration& operator=(FileConfiguration&& other) noexcept;
    ~FileConfiguration();

    /// -1 when the file has none.
    int serverId = -1;
    QString name;
    QString localPath;
    /// Decoded, without a leading '/'.
    QString serverPath;
    /// One character that the service keeps with the file.
    QString attribute;
    QString md5Checksum;
    QDateTime createdDate;
    QDateTime lastModifiedDate;
    /// In bytes. A listing gives sizes above 2147483647 as negative numbers.
    qint64 size = 0;
    /// The client's own. 2 and 4 keep a file in sync mode 2 from being downloaded; no other value means anything to a
    /// library.
    int stateCode = 0;
    /// The keys are "version", "versionId", "resourceId" and "visibility".
    QMap<QString, QString> customProperties;
    QString ownerId;
    /// Goes with ownerId wherever that is copied.
    int ownerAttribute = 0;
    QString itemId;
    QString versionId;
    QDateTime linksExtractedAtTime;
    /// The client's own. With 2, the file on disk and stateCode say whether to download; with any other value, 4
    /// included, versions and sizes do.
    int syncMode = 0;
    QList<FileLink> links;

    const QString& getPrivileges() const { return _privileges; }
    void setPrivileges(const QString& privileges) { _privileges = privileges; }

    const QStringList& getSyncOptionPersistentAcrossMachines() const { return _syncOptionPersistentAcrossMachines; }
    void setSyncOptionPersistentAcrossMachines(const QStringList& options) {
        _syncOptionPersistentAcrossMachines = options;
    }

private:
    QString _privileges;
    QStringList _syncOptionPersistentAcrossMachines;
};

}  // namespace config
}  // namespace sync

Q_DECLARE_TYPEINFO(sync::config::FileConfiguration, Q_MOVABLE_TYPE);
