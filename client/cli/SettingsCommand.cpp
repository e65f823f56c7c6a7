#include "client/cli/SettingsCommand.h"

#include "client/cli/SettingsFormat.h"
#include "client/sync/SyncConfiguration.h"

namespace ovsync {
namespace cli {

void ShowSettings(Connection& connection, const Location& location, bool asJson, Output& output) {
    const std::shared_ptr<sync::interf::IExternalSyncConfigManager> source = connection.FetchSyncConfig();
    const sync::dv::dvsync::ExternalSyncConfig published = source->GetExternalSyncConfig();
    syncing::SyncConfiguration tuning(source);
    output.Write(asJson ? SettingsJson(tuning, published, location.serverPath)
                        : SettingsTable(tuning, published, location.serverPath, output));
}

}  // namespace cli
}  // namespace ovsync
