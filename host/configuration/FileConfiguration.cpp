#include "host/configuration/FileConfiguration.h"

namespace sync {
namespace config {

FileConfiguration::FileConfiguration() = default;
FileConfiguration::FileConfiguration(const FileConfiguration& other) = default;
FileConfiguration::FileConfiguration(FileConfiguration&& other) noexcept = default;
FileConfiguration& FileConfiguration::operator=(const FileConfiguration& other) = default;
FileConfiguration& FileConfiguration::operator=(FileConfiguration&& other) noexcept = default;
FileConfiguration::~FileConfiguration() = default;

}  // namespace config
}  // namespace sync
