#include "client/store/FileConfigManager.h"

#include <utility>

namespace ovsync {
namespace store {

FileConfigManager::FileConfigManager(std::shared_ptr<RecordDatabase> records, const QString& root, int serverKey)
    : _records(std::move(records)), _prefix(root + QLatin1Char('/')), _serverKey(serverKey) {}

sync::config::FileConfiguration FileConfigManager::GetFileConfiguration(const QString& localPath, int serverKey) {
    if (serverKey != _serverKey || !localPath.startsWith(_prefix)) {
        return {};
    }
    const std::optional<FileRecord> record = _records->FindFile(localPath.mid(_prefix.size()));
    if (!record) {
        return {};
    }
    sync::config::FileConfiguration file = record->file;
    file.localPath = localPath;
    return file;
}

}  // namespace store
}  // namespace ovsync
