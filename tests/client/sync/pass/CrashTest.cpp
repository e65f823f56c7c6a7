#include <gmock/gmock.h>

#include <QDir>
#include <atomic>
#include <functional>

#include "client/sync/local/LocalError.h"
#include "client/wire/TransactionError.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalError;
using ovsync::report::SyncOutcome;
using ovsync::wire::TransactionError;
using tests::Text;
using Files = std::map<QString, QByteArray>;

/// What a test throws in place of the end of the process.
class Crash {};

/// A pass that ends at one moment after the other, before every single operation that changes something
/// on the disk; then one that does not.
class CrashTest : public tests::SyncTest {
protected:
    /// Whether the pass ended at its operation `number`, from which on the disk does nothing any more.
    bool CrashesAt(int number, const std::function<void()>& pass, bool withRequests = false) {
        std::atomic<int> operations{0};
        if (withRequests) {
            service.onRequest = [&operations, number](const QString& method, const QString&) {
                const int operation = ++operations;
                if (operation == number) {
                    throw Crash();
                }
                if (operation > number) {
                    throw TransactionError(method.toUtf8(), QUrl(), Text("gone"), {});
                }
            };
        }
        tree.before = [&operations, number](const char* name, const QString& path) {
            const bool changesSomething = qstrcmp(name, "Look") != 0 && qstrcmp(name, "List") != 0;
            const int operation = changesSomething || operations >= number ? ++operations : 0;
            if (operation == number) {
                throw Crash();
            }
            if (operation > number) {
                throw LocalError(path, EIO);
            }
        };
        try {
            pass();
        } catch (const Crash&) {
            EXPECT_GE(operations, number);
        } catch (const LocalError&) {
            EXPECT_GE(operations, number);
        } catch (const TransactionError&) {
            EXPECT_GE(operations, number);
        }
        service.onRequest = nullptr;
        tree.before = nullptr;
        return operations >= number;
    }
};

TEST_F(CrashTest, APullThatDiesAtAnyMomentLosesNothingAndTheNextOneCompletesIt) {
    options.transfers = 1;
    options.deletes = true;
    int moments = 0;
    for (int number = 1;; ++number) {
        const QByteArray round = QByteArray::number(number);
        service.Put(Text("replaced"), "old " + round);
        service.Put(Text("removed"), round);
        service.Put(Text("changed"), round);
        service.Remove(Text("new"));
        ASSERT_NE(Pull(), SyncOutcome::Failed);
        service.Put(Text("replaced"), "new " + round);
        service.Put(Text("new"), round);
        service.Put(Text("changed"), "theirs " + round);
        service.Remove(Text("removed"));
        Write("changed", "mine " + round);
        Write("own", round);

        const bool crashed = CrashesAt(number, [this] { Pull(); });
        // At every moment there is a whole file of the name.
        EXPECT_THAT(Content("replaced").toStdString(),
                    testing::AnyOf("old " + round.toStdString(), "new " + round.toStdString()))
            << number;
        EXPECT_EQ(Content("changed"), "mine " + round) << number;

        EXPECT_EQ(Pull(), SyncOutcome::LeftSome) << number;
        Files found = Contents();
        EXPECT_EQ(found[Text("replaced")], "new " + round) << number;
        EXPECT_EQ(found[Text("new")], round) << number;
        EXPECT_EQ(found[Text("changed")], "mine " + round) << number;
        EXPECT_EQ(found[Text("own")], round) << number;
        EXPECT_EQ(found.count(Text("removed")), 0U) << number;
        // And one copy of the service's version, not two.
        EXPECT_EQ(found.size(), 5U) << number;
        EXPECT_FALSE(HasTemporaryFiles()) << number;

        for (const auto& file : found) {
            if (file.first.contains(Text("from the service"))) {
                EXPECT_EQ(file.second, "theirs " + round);
                Remove(file.first.toUtf8().constData());
            }
        }
        Write("changed", "theirs " + round);
        EXPECT_EQ(Pull(), SyncOutcome::InStep) << number;
        if (!crashed) {
            break;
        }
        ++moments;
    }
    EXPECT_GT(moments, 15);
}

TEST_F(CrashTest, WhatIsWrittenBetweenADeadPullAndTheNextIsKept) {
    options.transfers = 1;
    for (int number = 1;; ++number) {
        const QByteArray round = QByteArray::number(number);
        service.Put(Text("a"), "old " + round);
        Write("a", "old " + round);
        ASSERT_EQ(Pull(), SyncOutcome::InStep);
        service.Put(Text("a"), "new " + round);
        const bool crashed = CrashesAt(number, [this] { Pull(); });
        Write("a", "mine " + round);
        Pull();
        bool isKept = false;
        for (const auto& file : Contents()) {
            isKept = isKept || file.second == "mine " + round;
        }
        EXPECT_TRUE(isKept) << number;
        EXPECT_FALSE(HasTemporaryFiles()) << number;
        if (!crashed) {
            break;
        }
    }
}

TEST_F(CrashTest, ATrialAfterADeadPullTellsWhatTheNextPullDoesAndLeavesAllAsItIs) {
    options.transfers = 1;
    for (int number = 1;; ++number) {
        const QByteArray round = QByteArray::number(number);
        service.Put(Text("a"), "old " + round);
        service.Put(Text("b"), "old " + round);
        Pull();
        service.Put(Text("a"), "new " + round);
        service.Remove(Text("b"));
        options.deletes = true;
        const bool crashed = CrashesAt(number, [this] { Pull(); });
        const Files left = Contents();
        options.isDryRun = true;
        EXPECT_EQ(Pull(), SyncOutcome::InStep) << number;
        const QVector<ovsync::report::SyncEvent> told = events;
        EXPECT_EQ(Contents(), left) << number;
        options.isDryRun = false;
        EXPECT_EQ(Pull(), SyncOutcome::InStep) << number;
        ASSERT_EQ(events.size(), told.size()) << number;
        for (int i = 0; i < told.size(); ++i) {
            EXPECT_EQ(events[i].kind, told[i].kind) << number;
            EXPECT_EQ(events[i].path, told[i].path) << number;
        }
        if (!crashed) {
            break;
        }
    }
}

TEST_F(CrashTest, APullThatGoesOnWithAPartAndDiesAtAnyMomentIsCompletedByTheNext) {
    options.transfers = 1;
    int moments = 0;
    for (int number = 1;; ++number) {
        const QByteArray content = QByteArray::number(number).repeated(2000000);
        service.Put(Text("large"), content);
        service.breaksAfter = content.size() - 300000;
        ASSERT_EQ(Pull(), SyncOutcome::Failed);
        ASSERT_TRUE(HasTemporaryFiles());
        service.breaksAfter = -1;
        const bool crashed = CrashesAt(number, [this] { Pull(); });
        EXPECT_EQ(Pull(), SyncOutcome::InStep) << number;
        EXPECT_TRUE(Content("large") == content) << number;
        EXPECT_FALSE(HasTemporaryFiles()) << number;
        if (!crashed) {
            break;
        }
        ++moments;
    }
    EXPECT_GT(moments, 5);
}

TEST_F(CrashTest, APushThatDiesAtAnyMomentIsCompletedByTheNext) {
    options.transfers = 1;
    int moments = 0;
    for (int number = 1;; ++number) {
        const QByteArray round = QByteArray::number(number);
        Write("f/changed", round);
        Write(("f/new" + round).constData(), round);
        const bool crashed = CrashesAt(number, [this] { Push(); });
        EXPECT_EQ(Push(), SyncOutcome::InStep) << number;
        EXPECT_EQ(service.Contents(), Contents()) << number;
        EXPECT_EQ(Pull(), SyncOutcome::InStep) << number;
        if (!crashed) {
            break;
        }
        ++moments;
    }
    EXPECT_GE(moments, 3);
}

TEST_F(CrashTest, ASyncThatDiesAtAnyMomentIsCompletedByTheNext) {
    options.transfers = 1;
    Write("renamed here 0", "1");
    Write("renamed there 0", "2");
    Write("folder here 0/g/x", "3");
    Write("folder there 0/g/x", "4");
    int moments = 0;
    for (int number = 1;; ++number) {
        const QByteArray last = QByteArray::number(number - 1);
        const QByteArray round = QByteArray::number(number);
        const auto name = [](const char* path, const QByteArray& suffix) { return Text(path + suffix); };
        for (const char* path : {"changed here", "changed there", "gone here", "gone there/a"}) {
            Write(path, "old " + round);
        }
        ASSERT_EQ(Sync(), SyncOutcome::InStep) << number;
        ASSERT_EQ(Sync(), SyncOutcome::InStep) << number;
        Write("changed here", "new " + round);
        service.Put(Text("changed there"), "new " + round);
        Write(("new here " + round).constData(), round);
        service.Put(name("new there ", round), round);
        Remove("gone here");
        service.Remove(Text("gone there"));
        for (const char* moved : {"renamed here ", "folder here "}) {
            ASSERT_TRUE(QDir().rename(Path((moved + last).constData()), Path((moved + round).constData())));
        }
        for (const char* moved : {"renamed there ", "folder there "}) {
            service.Move(name(moved, last), name(moved, round));
        }
        Files wanted = Contents();
        for (const char* moved : {"renamed there ", "folder there "}) {
            wanted.erase(name(moved, last));
        }
        wanted.erase(name("folder there ", last + "/g/x"));
        wanted.erase(Text("gone there/a"));
        wanted[name("renamed there ", round)] = "2";
        wanted[name("folder there ", round + "/g/x")] = "4";
        wanted[Text("changed there")] = "new " + round;
        wanted[name("new there ", round)] = round;

        const bool crashed = CrashesAt(
            number, [this] { Sync(); }, true);
        EXPECT_EQ(Sync(), SyncOutcome::InStep) << number << Told().join(Text(", ")).toStdString();
        EXPECT_EQ(Contents(), wanted) << number;
        EXPECT_EQ(service.Contents(), wanted) << number;
        EXPECT_FALSE(HasTemporaryFiles()) << number;
        if (!crashed || HasFailure()) {
            break;
        }
        ++moments;
    }
    EXPECT_GT(moments, 40);
}

}  // namespace
