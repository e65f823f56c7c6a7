#include "client/cli/commands/AgentCommand.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "dvsync/SyncService.h"
#include "host/core/SyncAppName.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using output::ExitCode;
using output::Output;

namespace {

const std::chrono::milliseconds LookInterval(20);
const int LookLimit = 250;

bool IsRunning() {
    return sync::dv::dvsync::IsDrovaneSynchronizationServiceRunning(sync::core::GetSyncAppName());
}

ExitCode Report(bool isRunning, bool asJson, Output& output) {
    const QString name = sync::core::GetSyncAppName();
    if (asJson) {
        const nlohmann::ordered_json json{{"name", name.toStdString()}, {"running", isRunning}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    } else {
        output.Write(name.toUtf8() + (isRunning ? " runs\n" : " does not run\n"));
    }
    return isRunning ? ExitCode::Done : ExitCode::Refused;
}

ExitCode ShowAgent(bool asJson, Output& output) {
    return Report(IsRunning(), asJson, output);
}

ExitCode StartAgent(bool asJson, Output& output) {
    bool isRunning = IsRunning();
    if (!isRunning && sync::dv::dvsync::StartSyncService()) {
        for (int i = 0; !isRunning && i < LookLimit; ++i) {
            std::this_thread::sleep_for(LookInterval);
            isRunning = IsRunning();
        }
    }
    return Report(isRunning, asJson, output);
}

}  // namespace

void AddAgentCommand(CommandRegistry& registry) {
    CLI::App* const agent = registry.AddGroup("agent", "Looks after the application that stays and synchronises.",
                                              "Exit status: 0 it runs, 1 it does not, 2 wrong usage.");
    registry.AddLocal(*agent, "status", "Says whether it runs.",
                      [](const Arguments& given, Output& output) { return ShowAgent(given.isJson, output); });
    registry.AddLocal(*agent, "start", "Starts it unless it runs already, and says whether it runs then.",
                      [](const Arguments& given, Output& output) { return StartAgent(given.isJson, output); });
}

}  // namespace commands
}  // namespace ovsync
