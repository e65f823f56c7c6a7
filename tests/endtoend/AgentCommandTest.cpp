#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <nlohmann/json.hpp>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using tests::ProgramResult;
using tests::RunOvsync;
using tests::Text;

// What a shell writes that sees no other processes than its own, which all end with it; "$0" is ovsync. Nothing when
// this system does not let the test make such a shell.
QByteArray OutputOfScriptAlone(const char* script) {
    const QStringList alone({Text("--user"), Text("--map-root-user"), Text("--pid"), Text("--fork"),
                             Text("--kill-child"), Text("--mount-proc"), Text("sh"), Text("-c")});
    QProcess shell;
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start(Text("unshare"), alone + QStringList(Text("true")));
    if (!shell.waitForFinished() || shell.exitStatus() != QProcess::NormalExit || shell.exitCode() != 0) {
        return QByteArray();
    }
    shell.start(Text("unshare"), alone + QStringList({Text(script), Text(OVSYNC_PROGRAM)}));
    EXPECT_TRUE(shell.waitForFinished());
    return shell.readAll();
}

TEST(AgentCommandTest, TheAgentIsStartedOnceFoundAndMissedWhenItEnded) {
    const QByteArray output = OutputOfScriptAlone(R"(
        "$0" agent status; echo "status $?"
        "$0" agent start; echo "start $?"
        "$0" agent start --json; echo "start again $?"
        "$0" agent status --json; echo "status $?"
        set -- $(pidof OvSync.exe); echo "agents $#"
        kill "$1"
        while kill -0 "$1" 2>/dev/null; do sleep 0.02; done
        "$0" agent status --json; echo "status $?"
    )");
    if (output.isEmpty()) {
        GTEST_SKIP() << "no namespaces of processes are to be had here";
    }
    EXPECT_EQ(output, QByteArray("OvSync.exe does not run\nstatus 1\n"
                                 "OvSync.exe runs\nstart 0\n"
                                 "{\"name\":\"OvSync.exe\",\"running\":true}\nstart again 0\n"
                                 "{\"name\":\"OvSync.exe\",\"running\":true}\nstatus 0\n"
                                 "agents 1\n"
                                 "{\"name\":\"OvSync.exe\",\"running\":false}\nstatus 1\n"));
}

TEST(AgentCommandTest, WrongUsageSaysWhatIsWrong) {
    const auto expect = [](const QStringList& arguments, const char* message) {
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(result.errors.toStdString(),
                    testing::AllOf(testing::StartsWith("ovsync: "), testing::HasSubstr(message)));
    };
    expect({Text("agent")}, "subcommand is required");
    expect({Text("agent"), Text("stop")}, "stop is not known here");
    expect({Text("agent"), Text("status"), Text("--frobnicate")}, "--frobnicate");
    expect({Text("agent"), Text("status"), Text("http://h/")}, "http://h/");
}

}  // namespace
