#pragma once

#include <QUrl>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace config {

/// The settings of one server account. A plain value; a default-constructed one names no server.
class OVSYNC_CONFIGURATION_EXPORT ServerConfiguration {
public:
    ServerConfiguration();
    ServerConfiguration(const ServerConfiguration& other);
    ServerConfiguration& operator=(const ServerConfiguration& other);
    ~ServerConfiguration();

    /// Scheme, host and port of the server; server paths are appended to it. Holds neither user nor password.
    QUrl baseUrl;
};

}  // namespace config
}  // namespace sync
