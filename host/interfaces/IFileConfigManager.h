#pragma once

#include <QObject>
#include <QString>

#include "host/configuration/FileConfiguration.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// The records of the synced files.
class OVSYNC_INTERFACES_EXPORT IFileConfigManager : public QObject {
    Q_OBJECT

public:
    /// The record of the file at `localPath` that belongs to `serverKey`; a default record when there is none.
    virtual config::FileConfiguration GetFileConfiguration(const QString& localPath, int serverKey) = 0;
};

}  // namespace interf
}  // namespace sync
