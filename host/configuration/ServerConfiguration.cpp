#include "host/configuration/ServerConfiguration.h"

namespace sync {
namespace config {

ServerConfiguration::ServerConfiguration() = default;
ServerConfiguration::ServerConfiguration(const ServerConfiguration& other) = default;
ServerConfiguration& ServerConfiguration::operator=(const ServerConfiguration& other) = default;
ServerConfiguration::~ServerConfiguration() = default;

}  // namespace config
}  // namespace sync
