#include <gtest/gtest.h>

#include <sys/wait.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <QThread>
#include <QUuid>
#include <csignal>
#include <functional>

#include "dvsync/SyncService.h"
#include "host/core/SyncAppName.h"
#include "tests/endtoend/AgentUser.h"

namespace {

using sync::dv::dvsync::IsDrovaneSynchronizationServiceRunning;
using sync::dv::dvsync::StartSyncService;

const int LimitInMilliseconds = 30000;

bool Becomes(const std::function<bool()>& condition) {
    for (int i = 0; i < LimitInMilliseconds / 10 && !condition(); ++i) {
        QThread::msleep(10);
    }
    return condition();
}

// The ids of the processes that run `program` with `mark` in their environment.
QList<pid_t> ProcessesOf(const QString& program, const QByteArray& mark) {
    QList<pid_t> ids;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        bool isNumber = false;
        const int id = entry.toInt(&isNumber);
        QFile environment(QStringLiteral("/proc/%1/environ").arg(id));
        if (isNumber && QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(id)) == program &&
            environment.open(QIODevice::ReadOnly) && environment.readAll().contains(mark)) {
            ids.append(id);
        }
    }
    return ids;
}

/// Whoever is started by this process is of a user of its own.
class AgentSurroundings : public testing::Test {
protected:
    AgentSurroundings() {
        for (const QString& variable : user.Environment()) {
            const QByteArray name = variable.section(QLatin1Char('='), 0, 0).toUtf8();
            if (qEnvironmentVariableIsSet(name.constData())) {
                before.insert(name, qgetenv(name.constData()));
            }
            qputenv(name.constData(), variable.section(QLatin1Char('='), 1).toUtf8());
        }
    }
    ~AgentSurroundings() override {
        for (const QString& variable : user.Environment()) {
            qunsetenv(variable.section(QLatin1Char('='), 0, 0).toUtf8().constData());
        }
        for (auto variable = before.begin(); variable != before.end(); ++variable) {
            qputenv(variable.key().constData(), variable.value());
        }
    }

    const tests::AgentUser user;

private:
    QMap<QByteArray, QByteArray> before;
};

class StartedAgentTest : public AgentSurroundings {
protected:
    StartedAgentTest() { qputenv("OVSYNC_AGENT_TEST", mark); }
    ~StartedAgentTest() override { EndWith(SIGKILL); }

    // Of the agents on this machine, those that this test has started.
    QList<pid_t> Started() const { return ProcessesOf(program, mark); }

    void EndWith(int signal) const {
        const QList<pid_t> ids = Started();
        for (const pid_t id : ids) {
            EXPECT_EQ(kill(id, signal), 0);
        }
    }

    const QString program = QFileInfo(QStringLiteral(OVSYNC_AGENT_PROGRAM)).canonicalFilePath();
    const QByteArray mark = QUuid::createUuid().toByteArray();
};

TEST_F(StartedAgentTest, IsStartedByTheLibraryFoundByItAndEnds) {
    EXPECT_EQ(QFileInfo(program).fileName(), sync::core::GetSyncAppName());
    ASSERT_TRUE(StartSyncService());
    ASSERT_TRUE(Becomes([this] { return Started().size() == 1; }));
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(QStringLiteral("OvSync.exe")));
    EndWith(SIGTERM);
    EXPECT_TRUE(Becomes([this] { return Started().isEmpty(); }));
}

// A copy of the agent, under a name that no other process on this machine has.
class AgentTest : public AgentSurroundings {
protected:
    AgentTest() {
        EXPECT_TRUE(QFile::copy(QStringLiteral(OVSYNC_AGENT_PROGRAM), program));
        const QByteArray file = QFile::encodeName(program);
        int pipeEnds[2] = {-1, -1};
        EXPECT_EQ(pipe(pipeEnds), 0);
        agent = fork();
        if (agent == 0) {
            dup2(pipeEnds[1], STDOUT_FILENO);
            dup2(pipeEnds[1], STDERR_FILENO);
            close(pipeEnds[0]);
            close(pipeEnds[1]);
            execl(file.constData(), file.constData(), nullptr);
            _exit(127);
        }
        close(pipeEnds[1]);
        // Ends when the agent has let go of its output: it waits for signals then.
        char byte = 0;
        EXPECT_EQ(read(pipeEnds[0], &byte, 1), 0) << "the agent wrote something";
        close(pipeEnds[0]);
    }
    ~AgentTest() override {
        if (agent > 0) {
            kill(agent, SIGKILL);
            waitpid(agent, nullptr, 0);
        }
    }

    // Its exit code after `signal`, or -1 when it ended otherwise.
    int End(int signal) {
        int status = 0;
        kill(agent, signal);
        EXPECT_EQ(waitpid(agent, &status, 0), agent);
        agent = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const QString name = QStringLiteral("Agent ") + QUuid::createUuid().toString() + QStringLiteral(".exe");
    QTemporaryDir directory;
    const QString program = directory.filePath(name);
    pid_t agent = -1;
};

TEST_F(AgentTest, StaysUntilItIsTerminated) {
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(name));
    EXPECT_EQ(End(SIGTERM), 0);
    EXPECT_FALSE(IsDrovaneSynchronizationServiceRunning(name));
}

TEST_F(AgentTest, EndsInOrderWhenItIsInterrupted) {
    EXPECT_EQ(End(SIGINT), 0);
}

TEST_F(AgentTest, IsFoundInAnyLetterCase) {
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(name.toUpper()));
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(name.toLower()));
}

TEST_F(AgentTest, IsFoundAfterItsFileWasRemoved) {
    ASSERT_TRUE(QFile::remove(program));
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(name));
}

}  // namespace
