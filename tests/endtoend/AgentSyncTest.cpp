#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QThread>
#include <csignal>
#include <memory>
#include <string>

#include "tests/endtoend/AgentUser.h"
#include "tests/fakes/Text.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using tests::AgentUser;
using tests::BecomesTrue;
using tests::ProgramResult;
using tests::RunTyped;
using tests::Service;
using tests::Text;

QByteArray Block(const QString& directory, const QString& url) {
    return "[[folder]]\npath = \"" + directory.toUtf8() + "\"\nurl = \"" + url.toUtf8() + "\"\n";
}

class AgentSyncTest : public testing::Test {
protected:
    void Add(const QString& url, const QStringList& options = QStringList(), const char* directory = "synced") {
        const ProgramResult result = _user.Ovsync(
            QStringList({Text("folders"), Text("add"), _user.Path(Text(directory)), url, Text("--no-check")}) +
            options);
        ASSERT_EQ(result.exitCode, 0) << ErrorsOf(result);
    }

    /// Names of files below the folder that passes have left behind.
    QStringList Temporaries() const {
        return QDir(_user.Path(Text("synced"))).entryList({Text(".*SyncTemp*")}, QDir::Files | QDir::Hidden);
    }

    AgentUser _user;
};

TEST_F(AgentSyncTest, BringsBothSidesInStepAndSaysSo) {
    Service service;
    service.AddFile(Text("there"), "from there");
    Add(service.Url());
    _user.Write(Text("synced/here"), "from here");
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_EQ(_user.Read(Text("synced/there")), "from there");
    EXPECT_TRUE(service.HasFile(Text("here")));
    const ProgramResult status = _user.Ovsync({Text("status")});
    EXPECT_EQ(status.exitCode, 0);
    EXPECT_THAT(status.output.toStdString(), HasSubstr("in step at "));
}

TEST_F(AgentSyncTest, SendsWhatChangesAndGoesOnAfterItWasStoppedAndContinued) {
    const Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    _user.Write(Text("synced/new folder/a"), "a");
    EXPECT_TRUE(BecomesTrue([&service] { return service.HasFile(Text("new folder/a")); }));
    _user.Signal(SIGSTOP);
    _user.Write(Text("synced/new folder/b"), "b");
    _user.Signal(SIGCONT);
    EXPECT_TRUE(BecomesTrue([&service] { return service.HasFile(Text("new folder/b")); }));
}

TEST_F(AgentSyncTest, TakesDeletionsAndRenamesToTheService) {
    const Service service;
    Add(service.Url());
    _user.Write(Text("synced/deleted"), "d");
    _user.Write(Text("synced/renamed"), "r");
    _user.StartAgent();
    ASSERT_TRUE(
        BecomesTrue([&service] { return service.HasFile(Text("deleted")) && service.HasFile(Text("renamed")); }));
    ASSERT_TRUE(_user.IsInStep());
    ASSERT_TRUE(QFile::remove(_user.Path(Text("synced/deleted"))));
    ASSERT_TRUE(QFile::rename(_user.Path(Text("synced/renamed")), _user.Path(Text("synced/new name"))));
    EXPECT_TRUE(
        BecomesTrue([&service] { return service.HasFile(Text("new name")) && !service.HasFile(Text("deleted")); }));
    EXPECT_FALSE(service.HasFile(Text("renamed")));
    EXPECT_EQ(_user.Read(Text("synced/new name")), "r");
}

TEST_F(AgentSyncTest, PollsAsOftenAsTheServiceSaysAndElseAsTheLibraryDoes) {
    const auto secondsBetween = [](const json& folder) {
        const auto time = [](const json& text) {
            return QDateTime::fromString(QString::fromStdString(text.get<std::string>()), Qt::ISODate);
        };
        return time(folder["lastPass"]["time"]).secsTo(time(folder["nextPass"]));
    };
    Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_NEAR(static_cast<double>(secondsBetween(_user.Folder())), 180, 1);
    service.AddFile(Text(".ovsync-service/sync-config.xml"),
                    "<SyncConfig><SyncFrequency>77</SyncFrequency></SyncConfig>");
    _user.Signal(SIGHUP);
    EXPECT_TRUE(_user.FolderBecomes([&](const json& folder) {
        return folder["state"] == "waiting" && secondsBetween(folder) >= 76 && secondsBetween(folder) <= 78;
    }));
}

TEST_F(AgentSyncTest, ThatAServicePublishesNothingOrNoVersionIsNoError) {
    const Service publishingNothing;
    Service publishingNoVersion;
    publishingNoVersion.AddFile(Text(".ovsync-service/sync-config.xml"),
                                "<SyncConfig><SyncFrequency>77</SyncFrequency></SyncConfig>");
    Add(publishingNothing.Url());
    Add(publishingNoVersion.Url(), QStringList(), "other");
    _user.StartAgent();
    ASSERT_TRUE(BecomesTrue([this] {
        const json folders = _user.Status()["folders"];
        return folders[0]["state"] == "waiting" && folders[1]["state"] == "waiting";
    }));
    EXPECT_THAT(_user.Log().toStdString(), Not(HasSubstr("ERROR")));
}

TEST_F(AgentSyncTest, LooksAgainWhenAPassByHandMayHaveSettledWhatWasLeft) {
    Service service;
    service.AddFile(Text("a/there"), "t");
    Add(service.Url());
    _user.Write(Text("synced/a"), "a file");
    _user.StartAgent();
    const auto hasProblems = [](int count) {
        return [count](const json& folder) { return folder["state"] == "waiting" && folder["problems"] == count; };
    };
    ASSERT_TRUE(_user.FolderBecomes(hasProblems(1)));
    service.Remove(Text("a/there"));
    ASSERT_EQ(_user.Ovsync({Text("rm"), service.Url() + Text("a/")}).exitCode, 0);
    const QStringList push{Text("push"), _user.Path(Text("synced")), service.Url()};
    ASSERT_EQ(_user.Ovsync(push + QStringList(Text("--dry-run"))).exitCode, 0);
    QThread::sleep(1);
    EXPECT_EQ(_user.Folder()["problems"], 1);
    ASSERT_EQ(_user.Ovsync(push).exitCode, 0);
    EXPECT_TRUE(_user.FolderBecomes(hasProblems(0)));
}

/// Has the folder at `path` as a pass has it.
class Held {
public:
    explicit Held(const QString& path)
        : _folder(open((path + Text("/.ovsync")).toUtf8().constData(), O_RDONLY | O_CLOEXEC)) {
        EXPECT_EQ(flock(_folder, LOCK_EX), 0);
    }
    ~Held() { close(_folder); }

private:
    const int _folder;
};

TEST_F(AgentSyncTest, WaitsForAPassByHandThatIsUnderWayAndSuchAPassForIt) {
    Service service;
    Add(service.Url());
    const QString synced = _user.Path(Text("synced"));
    ASSERT_EQ(_user.Ovsync({Text("sync"), synced, service.Url()}).exitCode, 0);
    {
        const Held held(synced);
        _user.StartAgent();
        ASSERT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["nextPass"].is_string(); }));
        EXPECT_EQ(_user.Folder()["error"], json());
    }
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_THAT(_user.Log().toStdString(), Not(HasSubstr("ERROR")));

    auto held = std::make_unique<Held>(synced);
    QProcess pass;
    pass.setProcessEnvironment(_user.Variables());
    pass.start(Text(OVSYNC_PROGRAM), {Text("sync"), synced, service.Url()});
    EXPECT_FALSE(pass.waitForFinished(500));
    held.reset();
    EXPECT_TRUE(pass.waitForFinished());
    EXPECT_EQ(pass.exitCode(), 0) << pass.readAllStandardError().toStdString();
}

TEST_F(AgentSyncTest, ReadsTheFileAgainAndKeepsWhatRanWhenItHasAMistake) {
    Service first;
    Service second;
    _user.Write(Text("config/ovsync/folders.toml"), Block(_user.Path(Text("one")), first.Url()));
    ASSERT_TRUE(QDir().mkpath(_user.Path(Text("one"))));
    ASSERT_TRUE(QDir().mkpath(_user.Path(Text("two"))));
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());

    _user.Write(Text("config/ovsync/folders.toml"), "colour = 1\n");
    _user.Signal(SIGHUP);
    EXPECT_TRUE(BecomesTrue([this] { return !_user.Status()["mistakes"].empty(); }));
    const ProgramResult status = _user.Ovsync({Text("status")});
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_THAT(status.output.toStdString(), HasSubstr("folders.toml: line 1: there is no \"colour\" here"));
    _user.Write(Text("one/a"), "a");
    EXPECT_TRUE(BecomesTrue([&first] { return first.HasFile(Text("a")); }));

    second.AddFile(Text("b"), "b");
    _user.Write(Text("config/ovsync/folders.toml"), Block(_user.Path(Text("two")), second.Url()));
    _user.Signal(SIGHUP);
    EXPECT_TRUE(BecomesTrue([this] { return _user.Read(Text("two/b")) == "b"; }));
    const json now = _user.Status();
    EXPECT_TRUE(now["mistakes"].empty());
    EXPECT_EQ(now["folders"].size(), 1U);
}

TEST_F(AgentSyncTest, SaysThatTheFileWasChangedUntilItIsReadAgain) {
    const Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_EQ(_user.Status()["foldersFileChanged"], false);
    const QByteArray before = _user.Read(Text("config/ovsync/folders.toml"));
    _user.Write(Text("config/ovsync/folders.toml"), before + "# changed\n");
    EXPECT_EQ(_user.Status()["foldersFileChanged"], true);
    const ProgramResult status = _user.Ovsync({Text("status")});
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_THAT(status.output.toStdString(),
                HasSubstr("folders.toml was changed after the agent read it; \"kill -HUP " +
                          std::to_string(_user.AgentProcess()) + "\" has it read again\n"));
    _user.Signal(SIGHUP);
    EXPECT_TRUE(BecomesTrue([this] { return _user.Status()["foldersFileChanged"] == false; }));
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_EQ(_user.Ovsync({Text("status")}).exitCode, 0);
}

TEST_F(AgentSyncTest, AFileThatCannotBeReadKeepsWhatRanAndIsNamedOnce) {
    const Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    ASSERT_TRUE(QFile::remove(_user.Path(Text("config/ovsync/folders.toml"))));
    ASSERT_TRUE(QDir().mkpath(_user.Path(Text("config/ovsync/folders.toml"))));
    _user.Signal(SIGHUP);
    ASSERT_TRUE(BecomesTrue([this] { return !_user.Status()["mistakes"].empty(); }));
    const ProgramResult status = _user.Ovsync({Text("status")});
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_THAT(status.output.toStdString(),
                testing::StartsWith(_user.Path(Text("config/ovsync/folders.toml")).toStdString() +
                                    ": it cannot be read: Is a directory\n"));
    EXPECT_EQ(_user.Status()["folders"].size(), 1U);
}

TEST_F(AgentSyncTest, TooManyDeletionsAreMadeByTheCommandThatIsNamed) {
    const auto runNamedCommand = [this](const char* part) {
        ASSERT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["problems"] == 1; }));
        const QString detail = QString::fromStdString(_user.Folder()["problemList"][0]["detail"]);
        static const QRegularExpression quoted(Text("\"(ovsync sync [^\"]+)\""));
        const QString command = quoted.match(detail).captured(1);
        ASSERT_THAT(command.toStdString(), HasSubstr(part)) << detail.toStdString();
        const ProgramResult result = RunTyped(command, _user.Environment());
        EXPECT_EQ(result.exitCode, 0) << command.toStdString() << ErrorsOf(result);
        _user.Signal(SIGHUP);
        EXPECT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["problems"] == 0; }));
    };
    Service service({Text("--user"), Text("ann")}, Text("secret"));
    _user.Write(Text(".netrc"), "machine 127.0.0.1 login ann password secret\n");
    for (int i = 0; i < 40; ++i) {
        _user.Write(Text("it's synced/") + QString::number(i), "1");
    }
    _user.Write(Text("it's synced/a.tmp"), "1");
    Add(service.Url(), {Text("-u"), Text("ann"), Text("--exclude"), Text("*.tmp"), Text("--keep-deleted"), Text("90")},
        "it's synced");
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    _user.Signal(SIGSTOP);
    for (int i = 0; i < 26; ++i) {
        ASSERT_TRUE(QFile::remove(_user.Path(Text("it's synced/") + QString::number(i))));
    }
    _user.Signal(SIGCONT);
    runNamedCommand("sync --max-delete 26 --user='ann' --keep-deleted=90 --exclude='*.tmp' ");
    EXPECT_FALSE(service.HasFile(Text("0")));
    EXPECT_FALSE(service.HasFile(Text("a.tmp")));
    for (int i = 26; i < 34; ++i) {
        service.Remove(QString::number(i));
    }
    _user.Signal(SIGHUP);
    runNamedCommand("sync --max-delete 8 ");
    EXPECT_FALSE(QFile::exists(_user.Path(Text("it's synced/26"))));
    EXPECT_TRUE(QFile::exists(_user.Path(Text("it's synced/39"))));
}

TEST_F(AgentSyncTest, AWrongPasswordStopsTheFolderUntilItIsChanged) {
    const Service service({Text("--user"), Text("ann")}, Text("right-one"));
    _user.Write(Text(".netrc"), "machine 127.0.0.1 login ann password wrong-one\n");
    Add(service.Url(), {Text("-u"), Text("ann")});
    _user.StartAgent();
    ASSERT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["state"] == "stopped"; }));
    const ProgramResult status = _user.Ovsync({Text("status")});
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_THAT(status.output.toStdString(), HasSubstr("the password for \"ann\" is wrong"));
    _user.Write(Text("synced/a"), "a");

    const ProgramResult login =
        _user.Ovsync({Text("login"), Text("-u"), Text("ann"), service.Url()}, {Text("OVSYNC_PASSWORD=right-one")});
    EXPECT_EQ(login.exitCode, 0) << ErrorsOf(login);
    EXPECT_EQ(_user.Read(Text(".netrc")), "machine 127.0.0.1 login ann password right-one\n");
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_TRUE(service.HasFile(Text("a")));
    for (const QByteArray& text :
         {_user.Log(), _user.Read(Text("agent.errors")), _user.Read(Text("config/ovsync/folders.toml")),
          _user.Ovsync({Text("status"), Text("--json")}).output}) {
        EXPECT_THAT(text.toStdString(), Not(HasSubstr("-one")));
    }
}

TEST_F(AgentSyncTest, ThePasswordOfAnotherUserIsNotTried) {
    const Service service({Text("--user"), Text("ann")}, Text("secret"));
    _user.Write(Text(".netrc"), "machine 127.0.0.1 login bob password secret\n");
    const ProgramResult listed = _user.Ovsync({Text("ls"), Text("-u"), Text("ann"), service.Url()});
    EXPECT_EQ(listed.exitCode, 2);
    EXPECT_THAT(ErrorsOf(listed), HasSubstr("No password for ann at 127.0.0.1"));
    Add(service.Url(), {Text("-u"), Text("ann")});
    _user.StartAgent();
    ASSERT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["state"] == "stopped"; }));
    EXPECT_THAT(
        _user.Folder()["error"].get<std::string>(),
        StartsWith("there is no password for \"ann\"; \"ovsync login --user='ann' '" + service.Url().toStdString()));
}

TEST_F(AgentSyncTest, AServiceThatIsAwayIsToldAndTriedAgain) {
    Add(Text("http://127.0.0.1:1/"));
    _user.StartAgent();
    EXPECT_TRUE(_user.FolderBecomes([](const json& folder) {
        return folder["state"] == "waiting" && folder["lastPass"]["outcome"] == "failed" &&
               folder["nextPass"].is_string() && folder["error"].is_string();
    }));
    EXPECT_EQ(_user.Ovsync({Text("status")}).exitCode, 1);
    _user.Signal(SIGTERM);
    EXPECT_EQ(_user.WaitForAgent(), 0);
}

TEST_F(AgentSyncTest, SaysThatItsFolderIsGoneAndWorksAgainWhenItIsBack) {
    const Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    ASSERT_TRUE(QDir().rename(_user.Path(Text("synced")), _user.Path(Text("away"))));
    EXPECT_TRUE(_user.FolderBecomes([](const json& folder) { return !folder["error"].is_null(); }));
    const ProgramResult status = _user.Ovsync({Text("status")});
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_THAT(status.output.toStdString(),
                HasSubstr("the folder is not there: it is gone, was never made, or its disk is not mounted. Nothing is "
                          "deleted on the service. Bring it back, make it, or run \"ovsync folders remove '" +
                          _user.Path(Text("synced")).toStdString() + "'\""));
    ASSERT_TRUE(QDir().rename(_user.Path(Text("away")), _user.Path(Text("synced"))));
    EXPECT_TRUE(_user.IsInStep());
}

TEST_F(AgentSyncTest, NamesTheFolderThatIsMissingAboveItsOwn) {
    const Service service;
    Add(service.Url() + Text("nope/x/"));
    _user.StartAgent();
    EXPECT_TRUE(_user.FolderBecomes([](const json& folder) { return !folder["error"].is_null(); }));
    EXPECT_THAT(
        _user.Folder()["error"].get<std::string>(),
        testing::AllOf(HasSubstr("there is no folder \"nope\" on 127.0.0.1:"),
                       HasSubstr("\"ovsync mkdir -p '" + service.Url().toStdString() + "nope'\" makes it"),
                       HasSubstr("run \"ovsync folders remove '" + _user.Path(Text("synced")).toStdString() + "'\"")));
}

TEST_F(AgentSyncTest, ASlowServiceDoesNotHoldUpAnotherFolder) {
    Service slow({Text("--fault"), Text("hang,method=PROPFIND")});
    Service quick;
    quick.AddFile(Text("a"), "a");
    Add(slow.Url());
    Add(quick.Url(), QStringList(), "quick");
    _user.StartAgent();
    EXPECT_TRUE(BecomesTrue([this] { return _user.Read(Text("quick/a")) == "a"; }));
    EXPECT_EQ(_user.Folder()["state"], "syncing");
    _user.Signal(SIGTERM);
    EXPECT_EQ(_user.WaitForAgent(), 0);
}

TEST_F(AgentSyncTest, EndsInMidPassWithEverythingWhole) {
    Service service({Text("--fault"), Text("hang,method=GET,request=4")});
    for (int i = 0; i < 8; ++i) {
        service.AddFile(QString::number(i), QByteArray(100000, 'x'));
    }
    Add(service.Url(), {Text("-j"), Text("1")});
    _user.StartAgent();
    ASSERT_TRUE(_user.FolderBecomes(
        [](const json& folder) { return folder["progress"].is_object() && folder["progress"]["files"] == 3; }));
    _user.Signal(SIGTERM);
    EXPECT_EQ(_user.WaitForAgent(), 0);
    EXPECT_THAT(_user.Log().toStdString(), testing::EndsWith("agent: ends\n"));
    EXPECT_EQ(Temporaries(), QStringList());
    const QDir synced(_user.Path(Text("synced")));
    for (const QString& name : synced.entryList(QDir::Files)) {
        EXPECT_EQ(QFileInfo(synced, name).size(), 100000);
    }
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_EQ(synced.entryList(QDir::Files).size(), 8);
}

TEST_F(AgentSyncTest, EndsThoughTheServiceNeverAnswers) {
    // The first file that is asked for is what the service publishes.
    const Service service({Text("--fault"), Text("hang,method=GET")});
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(BecomesTrue([this] { return QFile::exists(_user.Path(Text("synced/.ovsync/records.db"))); }));
    ASSERT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["state"] == "syncing"; }));
    _user.Signal(SIGTERM);
    EXPECT_EQ(_user.WaitForAgent(), 0);
    EXPECT_THAT(_user.Log().toStdString(), HasSubstr("agent: ends\n"));
}

TEST_F(AgentSyncTest, AKilledOneLeavesNothingThatTheNextDoesNotMend) {
    Service service({Text("--fault"), Text("hang,method=GET,request=4")});
    for (int i = 0; i < 8; ++i) {
        service.AddFile(QString::number(i), QByteArray(100000, 'x'));
    }
    Add(service.Url(), {Text("-j"), Text("1")});
    _user.StartAgent();
    ASSERT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["progress"].is_object(); }));
    _user.Signal(SIGKILL);
    EXPECT_EQ(_user.WaitForAgent(), -1);
    EXPECT_EQ(_user.Ovsync({Text("status")}).exitCode, 1);
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    EXPECT_EQ(Temporaries(), QStringList());
    const QDir synced(_user.Path(Text("synced")));
    EXPECT_EQ(synced.entryList(QDir::Files).size(), 8);
}

TEST_F(AgentSyncTest, ThereIsOneForAUser) {
    _user.StartAgent();
    const ProgramResult second = _user.Ovsync({Text("agent"), Text("run")});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(second.errors, "ovsync: one runs for you already; \"ovsync agent stop\" ends it\n");
    const ProgramResult third = _user.Ovsync({Text("agent"), Text("run"), Text("--json")});
    EXPECT_EQ(json::parse(third.errors.constData())["exitStatus"], 1);
    EXPECT_FALSE(_user.Status().is_null());
    AgentUser other;
    other.StartAgent();
    EXPECT_NE(other.Status()["process"], _user.Status()["process"]);
}

TEST_F(AgentSyncTest, PausedFoldersAreLeftAloneAndRemovedOnesForgotten) {
    Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    const QString directory = _user.Path(Text("synced"));
    EXPECT_EQ(_user.Ovsync({Text("folders"), Text("pause"), directory}).exitCode, 0);
    EXPECT_TRUE(_user.FolderBecomes([](const json& folder) { return folder["state"] == "paused"; }));
    service.AddFile(Text("a"), "a");
    EXPECT_EQ(_user.Ovsync({Text("folders"), Text("resume"), directory}).exitCode, 0);
    EXPECT_TRUE(BecomesTrue([this] { return _user.Read(Text("synced/a")) == "a"; }));
    EXPECT_EQ(_user.Ovsync({Text("folders"), Text("remove"), directory}).exitCode, 0);
    EXPECT_TRUE(BecomesTrue([this] { return _user.Status()["folders"].empty(); }));
    EXPECT_EQ(_user.Read(Text("synced/a")), "a");
}

TEST_F(AgentSyncTest, WhoeverWatchesIsToldWhatChanges) {
    const Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    QProcess watch;
    watch.setProcessEnvironment(_user.Variables());
    watch.start(Text(OVSYNC_PROGRAM), {Text("status"), Text("--watch"), Text("--json")});
    ASSERT_TRUE(watch.waitForReadyRead());
    _user.Write(Text("synced/a"), "a");
    QByteArray output;
    EXPECT_TRUE(BecomesTrue([&] {
        watch.waitForReadyRead(10);
        output += watch.readAll();
        return output.contains("\"state\":\"syncing\"") && output.contains("\"sent\":1");
    })) << output.toStdString();
    _user.Signal(SIGTERM);
    EXPECT_EQ(_user.WaitForAgent(), 0);
    EXPECT_TRUE(watch.waitForFinished());
}

// Of all threads of the process, how often they were woken.
long WakeUps(qint64 process) {
    long count = 0;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(process);
    for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status(tasks + QLatin1Char('/') + task + QLatin1String("/status"));
        EXPECT_TRUE(status.open(QIODevice::ReadOnly));
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("voluntary_ctxt_switches:")) {
                count += line.mid(line.indexOf(':') + 1).trimmed().toLong();
            }
        }
    }
    return count;
}

TEST_F(AgentSyncTest, SleepsWhileThereIsNothingToDo) {
    const Service service;
    Add(service.Url());
    _user.StartAgent();
    ASSERT_TRUE(_user.IsInStep());
    // What the pass has left to be done, such as closing connections, comes first.
    QThread::sleep(1);
    const long before = WakeUps(_user.AgentProcess());
    QThread::sleep(3);
    EXPECT_EQ(WakeUps(_user.AgentProcess()), before);
}

int Descriptors(qint64 process) {
    return QDir(QStringLiteral("/proc/%1/fd").arg(process)).entryList(QDir::Files | QDir::System).size();
}

TEST_F(AgentSyncTest, HasNoMoreDescriptorsAfterDozensOfPasses) {
    Service service;
    Add(service.Url());
    _user.StartAgent();
    int afterTheFirst = 0;
    for (int i = 0; i < 24; ++i) {
        const QString name = QString::number(i);
        _user.Write(Text("synced/") + name, "from here");
        service.AddFile(Text("there ") + name, "from there");
        _user.Signal(SIGHUP);
        ASSERT_TRUE(BecomesTrue([&] {
            return service.HasFile(name) && _user.Read(Text("synced/there ") + name) == "from there";
        })) << i;
        if (i == 3) {
            ASSERT_TRUE(_user.IsInStep());
            afterTheFirst = Descriptors(_user.AgentProcess());
        }
    }
    EXPECT_GT(afterTheFirst, 0);
    // A pass that changed something is followed by another one.
    EXPECT_TRUE(BecomesTrue([&] { return Descriptors(_user.AgentProcess()) <= afterTheFirst; }));
}

}  // namespace
