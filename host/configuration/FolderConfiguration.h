#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace config {

/// What a FolderConfiguration holds. The order of the fields is part of the contract.
///
/// Server paths are decoded and have neither a leading nor a trailing '/': "Projects/A".
class FolderConfigurationFields {
public:
    /// Selects the remote file manager and the file records that serve the folder. Sub-folders inherit it.
    int serverKey = 0;
    /// Copied into every record made from the folder, and handed to whoever makes a request for it.
    int serverId = 0;
    QString name;
    /// The number by which the service knows the folder, in decimal.
    QString resourceId;
    /// The path part of every URL built for the folder.
    QString serverPath;
    /// Set together with serverPath where a record is made from a path.
    QString companionServerPath;
    QString localPath;
    /// The prefix of server paths that localPath stands for.
    QString serverRootPath;
    QDateTime lastModifiedDate;
    QString ownerId;
    /// What the user may do with the folder, as bits.
    int accessMask = 0;

    const QString& getServerPath() const { return serverPath; }

    /// The time from which the next conditional listing asks; invalid when the folder was never listed.
    const QDateTime& getLastSyncTime() const { return _lastSyncTime; }
    void setLastSyncTime(const QDateTime& time) { _lastSyncTime = time; }

    /// The service's time of the last answer about this folder.
    const QDateTime& getLastServerSyncRequestTime() const { return _lastServerSyncRequestTime; }
    void setLastServerSyncRequestTime(const QDateTime& time) { _lastServerSyncRequestTime = time; }

    const QString& getPrivileges() const { return _privileges; }
    void setPrivileges(const QString& privileges) { _privileges = privileges; }

    /// The text by which the service addresses the folder; empty when not known.
    const QString& getServerFolderId() const { return _serverFolderId; }
    void setServerFolderId(const QString& serverFolderId) { _serverFolderId = serverFolderId; }

private:
    QDateTime _lastSyncTime;
    QDateTime _lastServerSyncRequestTime;
    QString _privileges;
    QString _serverFolderId;
};

/// One synced folder. A value with a meta-object: copies share nothing but their fields' implicitly shared data, and
/// signals and parents of the QObject are not copied. Not thread-safe.
class OVSYNC_CONFIGURATION_EXPORT FolderConfiguration : public QObject, public FolderConfigurationFields {
    Q_OBJECT

public:
    FolderConfiguration();
    FolderConfiguration(const FolderConfiguration& other);
    FolderConfiguration& operator=(const FolderConfiguration& other);
    ~FolderConfiguration() override;
};

}  // namespace config
}  // namespace sync
