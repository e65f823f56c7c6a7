#include "host/configuration/FolderConfiguration.h"

namespace sync {
namespace config {

FolderConfiguration::FolderConfiguration() = default;

FolderConfiguration::FolderConfiguration(const FolderConfiguration& other)
    : QObject(), FolderConfigurationFields(other) {}

FolderConfiguration& FolderConfiguration::operator=(const FolderConfiguration& other) {
    FolderConfigurationFields::operator=(other);
    return *this;
}

FolderConfiguration::~FolderConfiguration() = default;

}  // namespace config
}  // namespace sync
