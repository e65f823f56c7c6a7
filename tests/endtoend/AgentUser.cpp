#include "tests/endtoend/AgentUser.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <csignal>

namespace tests {

namespace {

const int AgentLimitInMilliseconds = 60000;
const int LookPauseInMilliseconds = 20;

}  // namespace

AgentUser::AgentUser() {
    for (const char* name : {"config", "state", "run"}) {
        EXPECT_TRUE(QDir().mkpath(_home.filePath(QLatin1String(name))));
    }
}

AgentUser::~AgentUser() {
    if (_agent.state() != QProcess::NotRunning) {
        _agent.kill();
        _agent.waitForFinished(AgentLimitInMilliseconds);
    }
}

QStringList AgentUser::Environment() const {
    return {QStringLiteral("HOME=") + _home.path(),
            QStringLiteral("XDG_CONFIG_HOME=") + _home.filePath(QStringLiteral("config")),
            QStringLiteral("XDG_STATE_HOME=") + _home.filePath(QStringLiteral("state")),
            QStringLiteral("XDG_RUNTIME_DIR=") + _home.filePath(QStringLiteral("run")),
            QStringLiteral("DBUS_SESSION_BUS_ADDRESS="),
            QStringLiteral("XDG_DATA_HOME=") + _home.filePath(QStringLiteral("data")),
            QStringLiteral("NETRC=")};
}

QProcessEnvironment AgentUser::Variables() const {
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const QString& variable : Environment()) {
        variables.insert(variable.section(QLatin1Char('='), 0, 0), variable.section(QLatin1Char('='), 1));
    }
    return variables;
}

void AgentUser::Write(const QString& name, const QByteArray& content) const {
    const QString path = _home.filePath(name);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

QByteArray AgentUser::Read(const QString& name) const {
    QFile file(_home.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray AgentUser::Log() const {
    return Read(QStringLiteral("state/ovsync/agent.log"));
}

ProgramResult AgentUser::Ovsync(const QStringList& arguments, const QStringList& environment) const {
    return RunOvsync(arguments, Environment() + environment);
}

void AgentUser::StartAgent() {
    _agent.setProcessEnvironment(Variables());
    _agent.setStandardErrorFile(_home.filePath(QStringLiteral("agent.errors")));
    _agent.start(QStringLiteral(OVSYNC_AGENT_PROGRAM), {QStringLiteral("--foreground")});
    ASSERT_TRUE(_agent.waitForStarted(AgentLimitInMilliseconds));
    ASSERT_TRUE(BecomesTrue([this] { return !Status().is_null(); }))
        << Read(QStringLiteral("agent.errors")).toStdString();
}

void AgentUser::Signal(int signal) const {
    EXPECT_EQ(kill(static_cast<pid_t>(_agent.processId()), signal), 0);
}

int AgentUser::WaitForAgent() {
    EXPECT_TRUE(_agent.state() == QProcess::NotRunning || _agent.waitForFinished(AgentLimitInMilliseconds));
    return _agent.exitStatus() == QProcess::NormalExit ? _agent.exitCode() : -1;
}

nlohmann::json AgentUser::Status() const {
    const QByteArray output = Ovsync({QStringLiteral("status"), QStringLiteral("--json")}).output;
    const nlohmann::json status = nlohmann::json::parse(output.toStdString(), nullptr, false);
    return status.is_object() && status["running"] == true ? status : nlohmann::json();
}

nlohmann::json AgentUser::Folder() const {
    const nlohmann::json status = Status();
    return status.is_null() || status["folders"].empty() ? nlohmann::json() : status["folders"][0];
}

bool AgentUser::FolderBecomes(const std::function<bool(const nlohmann::json& folder)>& condition) const {
    nlohmann::json folder;
    const bool isSo = BecomesTrue([&] {
        folder = Folder();
        return !folder.is_null() && condition(folder);
    });
    EXPECT_TRUE(isSo) << folder << '\n' << Log().toStdString();
    return isSo;
}

bool AgentUser::IsInStep() const {
    const auto isDone = [](const nlohmann::json& folder) {
        return folder["state"] == "waiting" && folder["lastPass"]["outcome"] == "inStep";
    };
    return FolderBecomes(isDone);
}

bool BecomesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < AgentLimitInMilliseconds / LookPauseInMilliseconds && !condition(); ++i) {
        QThread::msleep(LookPauseInMilliseconds);
    }
    return condition();
}

}  // namespace tests
