#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "dvsync/SyncService.h"
#include "tests/endtoend/AgentUser.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using tests::AgentUser;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::Text;

TEST(AgentCommandTest, TheAgentIsStartedOnceAndStopped) {
    const AgentUser user;
    const auto agent = [&user](const char* action) {
        const ProgramResult result = user.Ovsync({Text("agent"), Text(action), Text("--json")});
        return result.output + QByteArray::number(result.exitCode);
    };
    const QByteArray runs = "{\"name\":\"OvSync.exe\",\"running\":true}\n";
    const QByteArray runsNot = "{\"name\":\"OvSync.exe\",\"running\":false}\n";
    EXPECT_EQ(agent("status"), runsNot + '1');
    EXPECT_EQ(agent("start"), runs + '0');
    const nlohmann::json process = user.Status()["process"];
    EXPECT_EQ(agent("start"), runs + '0');
    EXPECT_EQ(user.Status()["process"], process);
    EXPECT_EQ(agent("status"), runs + '0');
    EXPECT_TRUE(sync::dv::dvsync::IsDrovaneSynchronizationServiceRunning(Text("OvSync.exe")));
    EXPECT_EQ(agent("stop"), runsNot + '0');
    EXPECT_EQ(agent("stop"), runsNot + '0');
    EXPECT_EQ(agent("status"), runsNot + '1');
    EXPECT_EQ(user.Ovsync({Text("status"), Text("--json")}).output, "{\"running\":false}\n");
}

TEST(AgentCommandTest, WithoutSystemdItSaysWhatElseCanBeDone) {
    const AgentUser user;
    const ProgramResult result = user.Ovsync({Text("agent"), Text("enable")}, {Text("PATH=/nowhere")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(ErrorsOf(result), testing::HasSubstr("systemd does not start it for you here"));
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
    expect({Text("agent"), Text("end")}, "end is not known here");
    expect({Text("agent"), Text("status"), Text("--frobnicate")}, "--frobnicate");
    expect({Text("agent"), Text("status"), Text("http://h/")}, "http://h/");
}

}  // namespace
