#pragma once

#include <QByteArray>

#include "client/cli/output/Output.h"
#include "dvsync/ExternalSyncConfig.h"
#include "host/interfaces/ISyncConfiguration.h"

namespace ovsync {
namespace output {

/// How synchronisation is tuned and what the service publishes, next to each other: a line for each value, with "-"
/// where one side has none. `path` is the file that the library is asked about where it decides file by file.
QByteArray SettingsTable(sync::interf::ISyncConfiguration& tuning,
                         const sync::dv::dvsync::ExternalSyncConfig& published, const QString& path,
                         const Output& output);

/// The same as a JSON object of two, "library" and "service". A limit that is not set is null.
QByteArray SettingsJson(sync::interf::ISyncConfiguration& tuning, const sync::dv::dvsync::ExternalSyncConfig& published,
                        const QString& path);

}  // namespace output
}  // namespace ovsync
