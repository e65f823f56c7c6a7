#include "client/cli/commands/VersionCommand.h"

#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include "client/cli/input/Application.h"
#include "client/cli/output/LoggedErrors.h"
#include "dvsync/ExternalSyncConfig.h"
#include "dvsync/VersionChecker.h"
#include "dvsync/VersionManager.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::LoggedErrors;
using output::Output;

QByteArray VersionReport(const std::shared_ptr<sync::interf::IVersionManager>& versions, bool asJson,
                         const Output& output) {
    // The library answers "no" as well where it could not compare, and says so in its log alone.
    bool isCompared = true;
    const LoggedErrors errors(log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("version")),
                              [&isCompared](const QString&) { isCompared = false; });
    QString newest;
    const bool isNew = sync::dv::dvsync::VersionChecker(versions).ThereIsANewAppVersion(newest);
    const QString local = versions->GetLocalAppVersion();
    const QString installer = versions->GetAppInstallerUrl();

    if (asJson) {
        const nlohmann::ordered_json json{{"local", local.toStdString()},
                                          {"newest", newest.toStdString()},
                                          {"installer", installer.toStdString()},
                                          {"isNew", isNew},
                                          {"isCompared", isCompared}};
        return QByteArray::fromStdString(json.dump()) + '\n';
    }
    QByteArray lines;
    const auto add = [&](const char* label, const QString& value) {
        lines += QByteArray(label).leftJustified(18) + (value.isEmpty() ? "none" : output.Shown(value)) + '\n';
    };
    add("Local version", local);
    add("Newest version", newest);
    add("Installer", installer);
    QString answer = isNew ? QStringLiteral("yes") : QStringLiteral("no");
    if (newest.isEmpty()) {
        answer = QStringLiteral("unknown (this server publishes no version)");
    } else if (!isCompared) {
        answer += QStringLiteral(" (not compared: only versions of the form KQ51_1001_WIN are)");
    }
    add("New version", answer);
    return lines;
}

namespace {

class NothingPublished : public sync::interf::IExternalSyncConfigManager {
public:
    sync::dv::dvsync::ExternalSyncConfig GetExternalSyncConfig() override {
        sync::dv::dvsync::ExternalSyncConfig config;
        config.mostCurrentVersion.clear();
        return config;
    }
};

void ShowVersions(ServiceConnection& connection, bool asJson, Output& output) {
    const input::Application application;
    std::shared_ptr<sync::interf::IExternalSyncConfigManager> published = connection.FetchSyncConfig();
    if (!published) {
        published = std::make_shared<NothingPublished>();
    }
    output.Write(VersionReport(std::make_shared<sync::dv::dvsync::VersionManager>(published), asJson, output));
}

}  // namespace

void AddVersionCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("version", "Shows the application's version and the newest one that the service offers.",
                           [](ServiceConnection& connection, const Location&, const Arguments& given, Output& output) {
                               ShowVersions(connection, given.isJson, output);
                           });
    registry.MarkAsTakingFiles(command);
    CommandRegistry::AddText(command, "URL", "The service, for example http://host/", registry.Given().url);
}

}  // namespace commands
}  // namespace ovsync
