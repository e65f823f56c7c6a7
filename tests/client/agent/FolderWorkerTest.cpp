#include "client/agent/FolderWorker.h"

#include <gmock/gmock.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "client/agent/AgentLog.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::agent::FolderStatus;
using ovsync::agent::FolderWorker;
using ovsync::agent::IFolderPass;
using ovsync::agent::PassResult;
using ovsync::agent::ServiceWishes;
using ovsync::folders::SyncedFolder;
using ovsync::report::ISyncObserver;
using ovsync::report::SyncEvent;
using tests::Text;
using PassEnd = PassResult::End;
using State = FolderStatus::State;

const std::chrono::seconds Patience(30);

/// What the passes of a test do, one after the other; those after the last find nothing to do.
class Script {
public:
    using Pass = std::function<PassResult(const std::atomic<bool>&, ISyncObserver&)>;

    void Add(const Pass& pass) { _passes.push_back(pass); }
    void Add(const PassResult& result) {
        Add([result](const std::atomic<bool>&, ISyncObserver&) { return result; });
    }

    PassResult Run(const std::atomic<bool>& isStopped, ISyncObserver& observer, const IFolderPass::Paths& changedHere) {
        Pass pass;
        {
            const std::lock_guard<std::mutex> lock(_mutex);
            _changedHere.push_back(changedHere);
            if (!_passes.empty()) {
                pass = _passes.front();
                _passes.pop_front();
            }
        }
        PassResult result = pass ? pass(isStopped, observer) : PassResult{PassEnd::InStep, QString()};
        const std::lock_guard<std::mutex> lock(_mutex);
        ++_count;
        _changed.notify_all();
        return result;
    }

    /// Of the pass of that number, from 0 on.
    IFolderPass::Paths ChangedHere(size_t pass) {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _changedHere.at(pass);
    }

    /// Whether so many passes have come to their end.
    bool HasRun(int count) {
        std::unique_lock<std::mutex> lock(_mutex);
        return _changed.wait_for(lock, Patience, [this, count] { return _count >= count; });
    }

    int Count() {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _count;
    }

    /// So often the service does not answer when it is asked what it wants.
    std::atomic<int> unansweredWishes{0};

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<Pass> _passes;
    std::vector<IFolderPass::Paths> _changedHere;
    int _count = 0;
};

class ScriptedPass : public IFolderPass {
public:
    explicit ScriptedPass(Script& script) : _script(script) {}

    PassResult Run(const std::atomic<bool>& isStopped, ISyncObserver& observer, const Paths& changedHere) override {
        return _script.Run(isStopped, observer, changedHere);
    }
    std::optional<ServiceWishes> AskWishes() override {
        if (_script.unansweredWishes > 0) {
            --_script.unansweredWishes;
            return std::nullopt;
        }
        return ServiceWishes{std::chrono::seconds(3600), std::chrono::seconds(0), Text("KQ99_1_WIN")};
    }

private:
    Script& _script;
};

class FolderWorkerTest : public testing::Test {
protected:
    FolderWorkerTest() {
        _folder.directory = _directory.path();
        _folder.url = Text("http://ann@h.test/folder/");
    }

    FolderWorker& Start() {
        _worker = std::make_unique<FolderWorker>(
            _folder, [this](const SyncedFolder&) { return std::make_unique<ScriptedPass>(_script); },
            [this] {
                const std::lock_guard<std::mutex> lock(_mutex);
                ++_tellings;
                _told.notify_all();
            });
        return *_worker;
    }

    /// The status once it is as `condition` wants it.
    template <typename Condition>
    FolderStatus StatusWhen(Condition condition) {
        std::unique_lock<std::mutex> lock(_mutex);
        EXPECT_TRUE(_told.wait_for(lock, Patience, [&] { return condition(_worker->Status()); }));
        return _worker->Status();
    }

    void Write(const char* name) {
        QFile file(_directory.filePath(Text(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }

    const QTemporaryDir _directory;
    SyncedFolder _folder;
    Script _script;
    std::mutex _mutex;
    std::condition_variable _told;
    int _tellings = 0;
    std::unique_ptr<FolderWorker> _worker;
};

bool IsWaiting(const FolderStatus& status) {
    return status.state == State::Waiting;
}

TEST_F(FolderWorkerTest, BeginsWithAPassAndTellsWhatItDid) {
    _script.Add([](const std::atomic<bool>&, ISyncObserver& observer) {
        observer.OnEvent({SyncEvent::Kind::Fetched, Text("a"), QString(), 5});
        observer.OnEvent({SyncEvent::Kind::Updated, Text("b"), QString(), 6});
        observer.OnEvent({SyncEvent::Kind::Sent, Text("c"), QString(), 7});
        observer.OnEvent({SyncEvent::Kind::Deleted, Text("d"), QString()});
        observer.OnEvent({SyncEvent::Kind::DeletedThere, Text("e"), QString()});
        observer.OnEvent({SyncEvent::Kind::Moved, Text("f"), QString()});
        observer.OnEvent({SyncEvent::Kind::MovedThere, Text("g"), QString()});
        return PassResult{PassEnd::InStep, QString()};
    });
    Start();
    const FolderStatus status = StatusWhen(IsWaiting);
    EXPECT_EQ(status.directory, _directory.path());
    EXPECT_EQ(status.url, Text("http://h.test/folder/"));
    EXPECT_EQ(status.fetched, 2);
    EXPECT_EQ(status.sent, 1);
    EXPECT_EQ(status.moved, 2);
    EXPECT_EQ(status.deleted, 2);
    EXPECT_EQ(status.bytes, 18);
    EXPECT_EQ(status.newVersion, Text("KQ99_1_WIN"));
    EXPECT_TRUE(status.lastPass.isValid());
    EXPECT_GT(status.nextPass, status.lastPass.addSecs(3000));
    EXPECT_EQ(status.error, QString());
    EXPECT_EQ(status.notWatched, QString());
}

TEST_F(FolderWorkerTest, TellsWhatIsLeftToSomebodyOnceForEachPath) {
    _script.Add([](const std::atomic<bool>&, ISyncObserver& observer) {
        observer.OnEvent({SyncEvent::Kind::Conflict, Text("a"), Text("pull"), 0});
        observer.OnEvent({SyncEvent::Kind::Refused, Text("b"), Text("bad name"), 0});
        observer.OnEvent({SyncEvent::Kind::Conflict, Text("a"), Text("push"), 0});
        observer.OnEvent({SyncEvent::Kind::NewerThere, Text("c"), QString(), 0});
        return PassResult{PassEnd::LeftSome, QString()};
    });
    Start();
    const FolderStatus status = StatusWhen(IsWaiting);
    EXPECT_EQ(status.lastEnd, PassEnd::LeftSome);
    EXPECT_EQ(status.problemCount, 2);
    EXPECT_EQ(status.conflictCount, 1);
    ASSERT_EQ(status.problems.size(), 2);
    EXPECT_EQ(status.problems.first().detail, Text("pull"));
}

TEST_F(FolderWorkerTest, DeletionsThatWaitForTheRestAreOneThingThatIsLeft) {
    _script.Add([](const std::atomic<bool>&, ISyncObserver& observer) {
        observer.OnEvent({SyncEvent::Kind::Waiting, Text("a"), QString(), 0});
        observer.OnEvent({SyncEvent::Kind::Refused, Text("b"), Text("bad name"), 0});
        observer.OnEvent({SyncEvent::Kind::Waiting, Text("c"), QString(), 0});
        return PassResult{PassEnd::LeftSome, QString()};
    });
    Start();
    const FolderStatus status = StatusWhen(IsWaiting);
    EXPECT_EQ(status.problemCount, 2);
    ASSERT_EQ(status.problems.size(), 2);
    EXPECT_EQ(status.problems.first().path, Text("b"));
    EXPECT_TRUE(status.problems.last().detail.startsWith(Text("2 deletions wait until everything else")));
}

TEST_F(FolderWorkerTest, OfManyProblemsAHundredAreNamedAndAllCounted) {
    _script.Add([](const std::atomic<bool>&, ISyncObserver& observer) {
        for (int i = 0; i < 250; ++i) {
            observer.OnEvent({SyncEvent::Kind::Refused, QString::number(i), QString(), 0});
        }
        return PassResult{PassEnd::LeftSome, QString()};
    });
    Start();
    const FolderStatus status = StatusWhen(IsWaiting);
    EXPECT_EQ(status.problemCount, 250);
    EXPECT_EQ(status.problems.size(), 100);
}

TEST_F(FolderWorkerTest, AChangeBringsAPassAndOneThatDoesNothingBringsNone) {
    Start();
    ASSERT_TRUE(_script.HasRun(1));
    Write("new");
    ASSERT_TRUE(_script.HasRun(2));
    StatusWhen(IsWaiting);
    EXPECT_EQ(_script.Count(), 2);
}

TEST_F(FolderWorkerTest, WhatAPassChangesItselfBringsOneFurtherPassAndNoMore) {
    _script.Add([this](const std::atomic<bool>&, ISyncObserver&) {
        Write("fetched");
        return PassResult{PassEnd::InStep, QString()};
    });
    Start();
    ASSERT_TRUE(_script.HasRun(2));
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));
    EXPECT_EQ(_script.Count(), 2);
}

TEST_F(FolderWorkerTest, AFailureIsToldAndTriedAgain) {
    _script.Add(PassResult{PassEnd::Failed, Text("no route")});
    _script.Add(PassResult{PassEnd::Failed, Text("still no route")});
    Start();
    const FolderStatus status = StatusWhen([](const FolderStatus& now) { return now.error == Text("still no route"); });
    EXPECT_EQ(status.state, State::Waiting);
    EXPECT_EQ(status.lastEnd, PassEnd::Failed);
    EXPECT_GE(status.nextPass, status.lastPass.addMSecs(4900));
}

TEST_F(FolderWorkerTest, TheLogHasEachProblemOnceThoughPassesFailInBetween) {
    const QString file = _directory.filePath(Text(".ovsync/log"));
    ASSERT_TRUE(QDir(_directory.path()).mkdir(Text(".ovsync")));
    const log4cplus::SharedAppenderPtr appender(
        new log4cplus::FileAppender(LOG4CPLUS_STRING_TO_TSTRING(file.toStdString())));
    appender->setLayout(std::make_unique<log4cplus::PatternLayout>(LOG4CPLUS_TEXT("%p %m%n")));
    ovsync::agent::AgentLogger().addAppender(appender);
    const auto leaving = [](const QStringList& paths) {
        return [paths](const std::atomic<bool>&, ISyncObserver& observer) {
            for (const QString& path : paths) {
                observer.OnEvent({SyncEvent::Kind::Refused, path, Text("bad name"), 0});
            }
            return PassResult{PassEnd::LeftSome, QString()};
        };
    };
    _script.Add(PassResult{PassEnd::Failed, Text("no route")});
    _script.Add(leaving({Text("a")}));
    _script.Add(PassResult{PassEnd::Failed, Text("no route")});
    _script.Add(leaving({Text("a"), Text("b")}));
    _script.Add(leaving({Text("b")}));
    _script.Add(leaving({Text("a"), Text("b")}));
    Start();
    for (const int passes : {2, 4, 5, 6}) {
        ASSERT_TRUE(_script.HasRun(passes));
        StatusWhen(IsWaiting);
        _worker->TryAgain();
    }
    _worker.reset();
    ovsync::agent::AgentLogger().removeAppender(appender);
    QFile log(file);
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    QByteArray expected =
        "ERROR %: no route\n"
        "WARN %: a: bad name\n"
        "INFO %: works again\n"
        "ERROR %: no route\n"
        "WARN %: b: bad name\n"
        "INFO %: works again\n"
        "WARN %: a: bad name\n";
    EXPECT_EQ(log.readAll(), expected.replace('%', _directory.path().toUtf8()));
}

TEST_F(FolderWorkerTest, WhileAnotherProcessHasTheFolderItWaitsWithoutAFailure) {
    _script.Add(PassResult{PassEnd::Busy, QString()});
    Start();
    EXPECT_EQ(StatusWhen([](const FolderStatus& status) { return status.nextPass.isValid(); }).state, State::Starting);
    ASSERT_TRUE(_script.HasRun(2));
    EXPECT_FALSE(_script.ChangedHere(1));
    const FolderStatus status = StatusWhen(IsWaiting);
    EXPECT_EQ(status.lastEnd, PassEnd::InStep);
    EXPECT_EQ(status.error, QString());
}

TEST_F(FolderWorkerTest, AServiceThatDoesNotSayWhatItWantsIsAskedAgainSoon) {
    _script.unansweredWishes = 1;
    Start();
    EXPECT_TRUE(_script.HasRun(2));
    EXPECT_EQ(StatusWhen([](const FolderStatus& status) { return !status.newVersion.isEmpty(); }).newVersion,
              Text("KQ99_1_WIN"));
}

TEST_F(FolderWorkerTest, WhoMayWriteInTheFolderIsAReasonToTryAgainAfterFailures) {
    _script.Add(PassResult{PassEnd::Failed, Text("no permission")});
    _script.Add(PassResult{PassEnd::Failed, Text("still no permission")});
    Start();
    StatusWhen([](const FolderStatus& now) {
        return now.error == Text("still no permission") && now.nextPass >= now.lastPass.addMSecs(4900);
    });
    ASSERT_EQ(chmod(_directory.path().toUtf8().constData(), 0700), 0);
    StatusWhen([](const FolderStatus& now) { return now.nextPass < now.lastPass.addMSecs(4900); });
}

TEST_F(FolderWorkerTest, ARejectionStopsTheFolderUntilItIsToTryAgain) {
    _script.Add(PassResult{PassEnd::Rejected, Text("wrong password")});
    FolderWorker& worker = Start();
    const FolderStatus status = StatusWhen([](const FolderStatus& now) { return now.state == State::Stopped; });
    EXPECT_EQ(status.error, Text("wrong password"));
    EXPECT_FALSE(status.nextPass.isValid());
    worker.TryAgain();
    ASSERT_TRUE(_script.HasRun(2));
    EXPECT_EQ(StatusWhen(IsWaiting).error, QString());
}

TEST_F(FolderWorkerTest, ShowsHowFarAPassIs) {
    _script.Add([](const std::atomic<bool>& isStopped, ISyncObserver& observer) {
        ovsync::report::SyncProgress progress;
        progress.doneFiles = 3;
        progress.allFiles = 5;
        observer.OnProgress(progress);
        while (!isStopped) {
            std::this_thread::yield();
        }
        return PassResult{PassEnd::Stopped, QString()};
    });
    Start();
    const FolderStatus status = StatusWhen([](const FolderStatus& now) { return now.progress.has_value(); });
    EXPECT_EQ(status.state, State::Syncing);
    EXPECT_EQ(status.progress->doneFiles, 3);
    EXPECT_EQ(status.progress->allFiles, 5);
}

TEST_F(FolderWorkerTest, StoppingEndsAPassAndIsTold) {
    std::atomic<bool> hasBegun{false};
    _script.Add([&hasBegun](const std::atomic<bool>& isStopped, ISyncObserver&) {
        hasBegun = true;
        while (!isStopped) {
            std::this_thread::yield();
        }
        return PassResult{PassEnd::Stopped, QString()};
    });
    FolderWorker& worker = Start();
    while (!hasBegun) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(worker.HasEnded());
    worker.Stop();
    StatusWhen([&worker](const FolderStatus&) { return worker.HasEnded(); });
    EXPECT_EQ(_script.Count(), 1);
}

TEST_F(FolderWorkerTest, AFolderThatIsNotThereIsToldOf) {
    _folder.directory = _directory.filePath(Text("missing"));
    Start();
    EXPECT_EQ(StatusWhen(IsWaiting).notWatched, Text("the folder is not there"));
}

TEST_F(FolderWorkerTest, APassIsToldWhatChangedSinceTheOneBefore) {
    _script.Add([this](const std::atomic<bool>&, ISyncObserver&) {
        Write("during");
        return PassResult{PassEnd::LeftSome, QString()};
    });
    Start();
    ASSERT_TRUE(_script.HasRun(2));
    EXPECT_FALSE(_script.ChangedHere(0));
    EXPECT_EQ(_script.ChangedHere(1), QSet<QString>({Text("during")}));
    Write("later");
    ASSERT_TRUE(_script.HasRun(3));
    EXPECT_EQ(_script.ChangedHere(2), QSet<QString>({Text("later")}));
    _worker->TryAgain();
    ASSERT_TRUE(_script.HasRun(4));
    EXPECT_EQ(_script.ChangedHere(3), QSet<QString>());
}

TEST_F(FolderWorkerTest, AfterAFailureAPassLooksAtEverything) {
    _script.Add({PassEnd::InStep, QString()});
    _script.Add({PassEnd::Failed, QString()});
    Start();
    ASSERT_TRUE(_script.HasRun(1));
    StatusWhen(IsWaiting);
    _worker->TryAgain();
    ASSERT_TRUE(_script.HasRun(3));
    EXPECT_EQ(_script.ChangedHere(1), QSet<QString>());
    EXPECT_FALSE(_script.ChangedHere(2));
}

}  // namespace
