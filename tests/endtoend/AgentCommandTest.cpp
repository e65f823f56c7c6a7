#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
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

/// A user whose systemctl does what `starting` does when it is to start the agent, and writes down how it was called.
class UserWithSystemd : public AgentUser {
public:
    explicit UserWithSystemd(const QByteArray& starting) {
        Write(Text("bin/systemctl"), "#!/bin/sh\necho \"$*\" >>\"$HOME/calls\"\ncase $2 in\nis-*) exit 1 ;;\nstart) " +
                                         starting + " ;;\nesac\n");
        EXPECT_TRUE(QFile::setPermissions(Path(Text("bin/systemctl")), QFile::ReadOwner | QFile::ExeOwner));
    }
    ~UserWithSystemd() { Ovsync({Text("agent"), Text("stop")}); }

    ProgramResult Enable() const {
        return Ovsync({Text("agent"), Text("enable")}, {Text("PATH=") + Path(Text("bin"))});
    }
    QList<QByteArray> Calls() const { return Read(Text("calls")).split('\n'); }
};

TEST(AgentCommandTest, SystemdIsGivenTheUnitThatLiesBesideTheProgram) {
    const UserWithSystemd user("\"" OVSYNC_PROGRAM "\" agent start");
    ASSERT_EQ(user.Ovsync({Text("agent"), Text("start")}).exitCode, 0);
    const nlohmann::json before = user.Status()["process"];
    const ProgramResult enabled = user.Enable();
    EXPECT_EQ(enabled.exitCode, 0) << ErrorsOf(enabled);
    EXPECT_EQ(enabled.output, "OvSync.exe runs\n");
    EXPECT_NE(user.Status()["process"], before);
    const QByteArray enable = "--user enable --force ";
    QByteArray unit;
    for (const QByteArray& call : user.Calls()) {
        unit = call.startsWith(enable) ? call.mid(enable.size()) : unit;
    }
    EXPECT_TRUE(unit.startsWith('/') && QFile::exists(QString::fromUtf8(unit))) << unit.toStdString();
    EXPECT_FALSE(user.Calls().contains("--user disable ovsync.service"));
}

TEST(AgentCommandTest, WhereSystemdDoesNotStartItAllIsAsBefore) {
    for (const char* starting : {"echo The job failed. >&2; exit 1", "exit 0"}) {
        const UserWithSystemd user(starting);
        ASSERT_EQ(user.Ovsync({Text("agent"), Text("start")}).exitCode, 0);
        const ProgramResult enabled = user.Enable();
        EXPECT_EQ(enabled.exitCode, 1);
        EXPECT_THAT(ErrorsOf(enabled),
                    testing::ContainsRegex("start it for you here \\((The job failed|it ends at once)"));
        EXPECT_EQ(user.Ovsync({Text("agent"), Text("status")}).exitCode, 0);
        EXPECT_EQ(user.Calls().count("--user disable ovsync.service"), 1);
    }
}

TEST(AgentCommandTest, WhereThereIsNoSystemdTheAgentThatRunsIsLeftAlone) {
    const AgentUser user;
    ASSERT_EQ(user.Ovsync({Text("agent"), Text("start")}).exitCode, 0);
    const nlohmann::json before = user.Status()["process"];
    EXPECT_EQ(user.Ovsync({Text("agent"), Text("enable")}, {Text("PATH=/nowhere")}).exitCode, 1);
    EXPECT_EQ(user.Status()["process"], before);
    EXPECT_EQ(user.Ovsync({Text("agent"), Text("stop")}).exitCode, 0);
}

TEST(AgentCommandTest, AProgramWithoutItsUnitIsNotBlamedOnTheMachine) {
    const AgentUser user;
    user.Write(Text("bin/empty"), "");
    ASSERT_TRUE(QFile::copy(Text(OVSYNC_PROGRAM), user.Path(Text("bin/ovsync"))));
    const ProgramResult enabled =
        tests::RunTyped(user.Path(Text("bin/ovsync")) + Text(" agent enable"), user.Environment());
    EXPECT_EQ(enabled.exitCode, 1);
    EXPECT_THAT(ErrorsOf(enabled),
                testing::HasSubstr(user.Path(Text("lib/systemd/user/ovsync.service")).toStdString()));
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
