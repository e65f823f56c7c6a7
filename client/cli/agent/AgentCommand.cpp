#include "client/cli/agent/AgentCommand.h"

#include <CLI/CLI.hpp>

#include <dlfcn.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "client/agent/AgentClient.h"
#include "client/cli/input/Application.h"
#include "client/cli/input/Refusal.h"
#include "dvsync/SyncService.h"
#include "host/core/SyncAppName.h"

namespace ovsync {
namespace commands {

using agent::AgentClient;
using input::Arguments;
using input::Refusal;
using output::ExitCode;
using output::Output;

namespace {

const char* const AgentFooter =
    "Exit status: 0 it runs, or with stop it does not, or it was enabled; 1 the other way round; 2 wrong usage.";

const std::chrono::milliseconds LookInterval(20);
const int LookLimit = 300;

void Report(bool isRunning, bool asJson, Output& output) {
    const QString name = sync::core::GetSyncAppName();
    if (asJson) {
        const nlohmann::ordered_json json{{"name", name.toStdString()}, {"running", isRunning}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    } else {
        output.Write(name.toUtf8() + (isRunning ? " runs\n" : " does not run\n"));
    }
}

template <typename Condition>
bool BecomesTrue(Condition condition) {
    for (int i = 0; i < LookLimit; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(LookInterval);
    }
    return false;
}

ExitCode ShowAgent(bool asJson, Output& output) {
    const bool isRunning = AgentClient::IsRunning();
    Report(isRunning, asJson, output);
    return isRunning ? ExitCode::Done : ExitCode::Refused;
}

/// Whether one runs then.
bool BeginAgent() {
    return (AgentClient::IsRunning() || sync::dv::dvsync::StartSyncService()) &&
           BecomesTrue([] { return AgentClient().Send("status"); });
}

ExitCode StartAgent(bool asJson, Output& output) {
    const input::Application application;
    const bool isRunning = BeginAgent();
    Report(isRunning, asJson, output);
    return isRunning ? ExitCode::Done : ExitCode::Refused;
}

/// Whether none runs any more.
bool EndAgent() {
    AgentClient agent;
    // One that just begins takes no requests yet.
    return BecomesTrue([&agent] { return !AgentClient::IsRunning() || agent.Send("stop"); }) &&
           BecomesTrue([] { return !AgentClient::IsRunning(); });
}

ExitCode StopAgent(bool asJson, Output& output) {
    const input::Application application;
    const bool hasEnded = EndAgent();
    Report(!hasEnded, asJson, output);
    return hasEnded ? ExitCode::Done : ExitCode::Refused;
}

/// Beside the library OvSyncCore, where the library starts it from, too.
QString AgentProgram() {
    Dl_info core{};
    if (dladdr(reinterpret_cast<void*>(&sync::core::GetSyncAppName), &core) == 0) {
        throw Refusal(QStringLiteral("It is not known where the libraries of ovsync lie."));
    }
    return QFileInfo(QFile::decodeName(core.dli_fname)).absolutePath() + QLatin1Char('/') +
           sync::core::GetSyncAppName();
}

QString UnitName() {
    return QStringLiteral("ovsync.service");
}

[[noreturn]] void RunAgentHere() {
    if (AgentClient::IsRunning()) {
        throw Refusal(QStringLiteral("one runs for you already; \"ovsync agent stop\" ends it"));
    }
    const QByteArray program = QFile::encodeName(AgentProgram());
    execl(program.constData(), program.constData(), "--foreground", nullptr);
    throw Refusal(
        QStringLiteral("%1: %2").arg(QFile::decodeName(program), QString::fromLocal8Bit(std::strerror(errno))));
}

/// What it complains of; none when it did what it was to.
std::optional<QString> ComplaintOfSystemd(const QStringList& arguments) {
    QProcess systemctl;
    systemctl.start(QStringLiteral("systemctl"), QStringList(QStringLiteral("--user")) + arguments);
    if (systemctl.waitForFinished() && systemctl.exitStatus() == QProcess::NormalExit && systemctl.exitCode() == 0) {
        return std::nullopt;
    }
    const QString said = QString::fromUtf8(systemctl.readAllStandardError()).simplified();
    return said.isEmpty() ? systemctl.errorString() : said;
}

bool SystemdSays(const char* question) {
    return !ComplaintOfSystemd({QLatin1String(question), QStringLiteral("--quiet"), UnitName()});
}

/// Whether the agent that it has started comes to answer.
bool AnswersUnlessItEnds() {
    BecomesTrue([] { return AgentClient().Send("status") || !SystemdSays("is-active"); });
    return AgentClient().Send("status");
}

/// Has it start the agent in place of one that runs. What it complains of; that one runs again then.
std::optional<QString> ComplaintOfStart() {
    const bool hasRun = AgentClient::IsRunning();
    // One that systemd did not start would be in the way.
    EndAgent();
    std::optional<QString> complaint = ComplaintOfSystemd({QStringLiteral("start"), UnitName()});
    if (!complaint && !AnswersUnlessItEnds()) {
        complaint = QStringLiteral("it ends at once; \"journalctl --user -u ovsync\" tells why");
        ComplaintOfSystemd({QStringLiteral("stop"), UnitName()});
    }
    if (complaint && hasRun && !BeginAgent()) {
        *complaint += QStringLiteral("; the agent that ran was stopped, and does not start again");
    }
    return complaint;
}

/// Has it start the agent now and at each login. What it complains of; all is as before then.
std::optional<QString> ComplaintOfEnabling(const QString& unit) {
    // Without it nothing is to be touched.
    std::optional<QString> complaint = ComplaintOfSystemd({QStringLiteral("show-environment")});
    if (complaint) {
        return complaint;
    }
    const bool wasEnabled = SystemdSays("is-enabled");
    // Systemd looks in other places than where this is installed. Another copy may have been enabled before.
    complaint = ComplaintOfSystemd({QStringLiteral("enable"), QStringLiteral("--force"), unit});
    if (!complaint && !(SystemdSays("is-active") && AgentClient::IsRunning())) {
        complaint = ComplaintOfStart();
    }
    if (complaint && !wasEnabled) {
        ComplaintOfSystemd({QStringLiteral("disable"), UnitName()});
    }
    return complaint;
}

ExitCode EnableAgent(bool asJson, Output& output) {
    const input::Application application;
    const QString unit =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1String("/../lib/systemd/user/") + UnitName());
    if (!QFile::exists(unit)) {
        throw Refusal(QStringLiteral("There is no %1, by which systemd would start it. Install ovsync whole (\"cmake "
                                     "--install\", or the package), or have \"ovsync agent start\" run when you log in")
                          .arg(unit));
    }
    if (const std::optional<QString> complaint = ComplaintOfEnabling(unit)) {
        throw Refusal(
            QStringLiteral("systemd does not start it for you here (%1). Have \"ovsync agent start\" run when you log "
                           "in, from ~/.profile for example, or as a line \"@reboot ovsync agent start\" of crontab -e")
                .arg(*complaint));
    }
    return ShowAgent(asJson, output);
}

}  // namespace

void AddAgentCommand(CommandRegistry& registry) {
    CLI::App* const agent =
        registry.AddGroup("agent", "Looks after the application that stays and keeps folders in step.", AgentFooter);
    registry.AddLocal(*agent, "status", "Says whether it runs; \"ovsync status\" says what it does.",
                      [](const Arguments& given, Output& output) { return ShowAgent(given.isJson, output); });
    registry.AddLocal(*agent, "start", "Starts it unless it runs already, and says whether it runs then.",
                      [](const Arguments& given, Output& output) { return StartAgent(given.isJson, output); });
    registry.AddLocal(*agent, "stop", "Ends it, and what it has under way, within five seconds.",
                      [](const Arguments& given, Output& output) { return StopAgent(given.isJson, output); });
    registry.AddLocal(*agent, "run", "Becomes it, and shows what it logs.",
                      [](const Arguments&, Output&) -> ExitCode { RunAgentHere(); });
    registry.AddLocal(*agent, "enable", "Has systemd start it now, and whenever you log in.",
                      [](const Arguments& given, Output& output) { return EnableAgent(given.isJson, output); });
}

}  // namespace commands
}  // namespace ovsync
