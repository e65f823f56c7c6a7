#include "client/cli/commands/SettingsCommand.h"

#include <CLI/CLI.hpp>
#include <optional>

#include "client/cli/input/Application.h"
#include "client/cli/output/SettingsFormat.h"
#include "client/sync/pass/SyncConfiguration.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::Output;
using output::SettingsJson;
using output::SettingsTable;

namespace {

void ShowSettings(ServiceConnection& connection, const Location& location, bool asJson, Output& output) {
    const input::Application application;
    const std::shared_ptr<sync::interf::IExternalSyncConfigManager> source = connection.FetchSyncConfig();
    std::optional<sync::dv::dvsync::ExternalSyncConfig> published;
    if (source) {
        published = source->GetExternalSyncConfig();
    }
    pass::SyncConfiguration tuning(source);
    output.Write(asJson ? SettingsJson(tuning, published, location.serverPath)
                        : SettingsTable(tuning, published, location.serverPath, output));
}

}  // namespace

void AddSettingsCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("settings", "Shows how synchronisation is tuned, and what the service publishes about it.",
                           [](ServiceConnection& connection, const Location& location, const Arguments& given,
                              Output& output) { ShowSettings(connection, location, given.isJson, output); });
    registry.MarkAsTakingFiles(command);
    CommandRegistry::AddText(command, "URL", "The service, for example http://host/", registry.Given().url);
}

}  // namespace commands
}  // namespace ovsync
