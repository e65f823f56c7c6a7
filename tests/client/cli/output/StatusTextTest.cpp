#include "client/cli/output/StatusText.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <string>

#include "client/agent/StatusJson.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::agent::AgentStatus;
using ovsync::agent::FolderStatus;
using ovsync::agent::PassResult;
using ovsync::agent::StatusLine;
using ovsync::output::IsAllWell;
using ovsync::output::Output;
using ovsync::output::StatusText;
using ovsync::report::SyncEvent;
using testing::HasSubstr;
using tests::Text;

class StatusTextTest : public testing::Test {
protected:
    StatusTextTest() {
        _folder.directory = Text("/data/a");
        _folder.url = Text("http://h.test/a/");
        _folder.state = FolderStatus::State::Waiting;
        _folder.lastPass = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30));
        _folder.nextPass = _folder.lastPass.addSecs(180);
    }

    QByteArray Line() const {
        AgentStatus status = _status;
        status.folders.append(_folder);
        return StatusLine(status);
    }
    std::string Shown() const { return StatusText(Line(), Output()).toStdString(); }

    AgentStatus _status;
    FolderStatus _folder;
};

TEST_F(StatusTextTest, SaysSinceWhenAFolderIsInStepAndWhenTheNextPassIs) {
    EXPECT_EQ(Shown(),
              "/data/a  http://h.test/a/\n"
              "  in step at 2026-11-20 10:15:30, next pass at 2026-11-20 10:18:30\n");
    EXPECT_TRUE(IsAllWell(Line()));
}

TEST_F(StatusTextTest, SaysWhatIsUnderWay) {
    _folder.state = FolderStatus::State::Syncing;
    _folder.progress = ovsync::report::SyncProgress();
    _folder.progress->doneFiles = 1;
    _folder.progress->allFiles = 2;
    _folder.progress->doneBytes = 1024;
    _folder.progress->allBytes = 4096;
    _folder.progressSeconds = 2;
    EXPECT_THAT(Shown(), HasSubstr("pass under way\n  [======                  ] 1/2 files, 1.0 KiB of 4.0 KiB, "
                                   "512 B/s, 6 s left\n"));
    EXPECT_THAT(Line().toStdString(), HasSubstr("\"bytesPerSecond\":512,\"secondsLeft\":6"));
}

TEST_F(StatusTextTest, SaysWhatIsLeftToSomebody) {
    _folder.lastEnd = PassResult::End::LeftSome;
    _folder.problemCount = 3;
    _folder.conflictCount = 1;
    _folder.problems = {{SyncEvent::Kind::Conflict, Text("a.txt"), Text("it changed on both sides"), 0},
                        {SyncEvent::Kind::Refused, Text("b"), Text("the name is reserved"), 0}};
    EXPECT_THAT(Shown(), HasSubstr("  3 left to you, 1 of them in conflict:\n"
                                   "    a.txt: it changed on both sides\n"
                                   "    b: the name is reserved\n"
                                   "    and 1 more\n"));
    EXPECT_FALSE(IsAllWell(Line()));
}

TEST_F(StatusTextTest, SaysWhyAFolderFailedOrIsStopped) {
    _folder.lastEnd = PassResult::End::Rejected;
    _folder.state = FolderStatus::State::Stopped;
    _folder.nextPass = QDateTime();
    _folder.error = Text("the service does not take the password");
    EXPECT_EQ(Shown(),
              "/data/a  http://h.test/a/\n"
              "  failed at 2026-11-20 10:15:30, stopped until that is changed\n"
              "  the service does not take the password\n");
    EXPECT_FALSE(IsAllWell(Line()));
}

TEST_F(StatusTextTest, SaysWhyAFolderIsNotWatchedAndWhenItIsPausedOrNew) {
    _folder.notWatched = Text("too many");
    EXPECT_THAT(Shown(), HasSubstr("changes here are noticed only by the clock: too many\n"));
    _folder = FolderStatus();
    EXPECT_THAT(Shown(), HasSubstr("  starting\n"));
    _folder.state = FolderStatus::State::Syncing;
    EXPECT_THAT(Shown(), HasSubstr("  first pass under way\n"));
    _folder.state = FolderStatus::State::Paused;
    EXPECT_THAT(Shown(), HasSubstr("  paused\n"));
    EXPECT_TRUE(IsAllWell(Line()));
}

TEST_F(StatusTextTest, SaysWhatConcernsTheAgent) {
    _status.foldersFile = Text("/c/folders.toml");
    _status.mistakes = QStringList(Text("line 3: a folder has no \"colour\""));
    _folder.newVersion = Text("KQ52_1_WIN");
    EXPECT_THAT(Shown(), testing::StartsWith("/c/folders.toml: line 3: a folder has no \"colour\"\n"
                                             "There is a newer version: KQ52_1_WIN\n"));
    EXPECT_FALSE(IsAllWell(Line()));
    _status.mistakes.clear();
    EXPECT_TRUE(IsAllWell(Line()));
    _status.hasFoldersFileChanged = true;
    EXPECT_THAT(Shown(), testing::StartsWith("/c/folders.toml was changed after the agent read it; \"kill -HUP " +
                                             std::to_string(getpid()) + "\" has it read again\n"));
    EXPECT_FALSE(IsAllWell(Line()));
    EXPECT_THAT(StatusText(StatusLine(AgentStatus()), Output()).toStdString(), HasSubstr("no folder to keep in step"));
}

}  // namespace
