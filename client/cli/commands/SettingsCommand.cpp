#include "client/cli/commands/SettingsCommand.h"

#include "client/cli/input/Application.h"
#include "client/cli/output/SettingsFormat.h"
#include "client/sync/pass/SyncConfiguration.h"

namespace ovsync {
namespace commands {

using input::Location;
using library::ServiceConnection;
using output::Output;
using output::SettingsJson;
using output::SettingsTable;

void ShowSettings(ServiceConnection& connection, const Location& location, bool asJson, Output& output) {
    const input::Application application;
    const std::shared_ptr<sync::interf::IExternalSyncConfigManager> source = connection.FetchSyncConfig();
    const sync::dv::dvsync::ExternalSyncConfig published = source->GetExternalSyncConfig();
    pass::SyncConfiguration tuning(source);
    output.Write(asJson ? SettingsJson(tuning, published, location.serverPath)
                        : SettingsTable(tuning, published, location.serverPath, output));
}

}  // namespace commands
}  // namespace ovsync
