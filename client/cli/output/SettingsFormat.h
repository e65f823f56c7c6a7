#pragma once

#include <QByteArray>
#include <optional>

#include "client/cli/output/Output.h"
#include "dvsync/ExternalSyncConfig.h"
#include "host/interfaces/ISyncConfiguration.h"

namespace ovsync {
namespace output {

/// How synchronisation is tuned and what the service publishes, next to each other: a line for each value, with "-"
/// where one side has none; before that a line that says so where the service publishes nothing. `path` is the file
/// that the library is asked about where it decides file by file.
QByteArray SettingsTable(sync::interf::ISyncConfiguration& tuning,
                         const std::optional<sync::dv::dvsync::ExternalSyncConfig>& published, const QString& path,
                         const Output& output);

/// The same as a JSON object of two, "library" and "service"; that is null where it publishes nothing, as is a limit
/// that is not set.
QByteArray SettingsJson(sync::interf::ISyncConfiguration& tuning,
                        const std::optional<sync::dv::dvsync::ExternalSyncConfig>& published, const QString& path);

}  // namespace output
}  // namespace ovsync
