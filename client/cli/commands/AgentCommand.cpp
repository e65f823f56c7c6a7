#include "client/cli/commands/AgentCommand.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "dvsync/SyncService.h"
#include "host/core/SyncAppName.h"

namespace ovsync {
namespace commands {

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

}  // namespace

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

}  // namespace commands
}  // namespace ovsync
