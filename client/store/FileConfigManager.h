#pragma once

#include <QString>
#include <memory>

#include "client/store/RecordDatabase.h"
#include "host/interfaces/IFileConfigManager.h"

namespace ovsync {
namespace store {

/// Gives a library the records of one synced folder. Not thread-safe.
class FileConfigManager : public sync::interf::IFileConfigManager {
public:
    /// `records` are those of the folder at the absolute path `root`, and belong to `serverKey`.
    FileConfigManager(std::shared_ptr<RecordDatabase> records, const QString& root, int serverKey);

    sync::config::FileConfiguration GetFileConfiguration(const QString& localPath, int serverKey) override;

private:
    const std::shared_ptr<RecordDatabase> _records;
    const QString _prefix;
    const int _serverKey;
};

}  // namespace store
}  // namespace ovsync
