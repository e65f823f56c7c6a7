#include <gmock/gmock.h>

#include <atomic>
#include <functional>

#include "client/sync/local/LocalError.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalError;
using ovsync::report::SyncOutcome;
using tests::Text;
using Files = std::map<QString, QByteArray>;

/// What a test throws in place of the end of the process.
class Crash {};

/// A pass that ends at one moment after the other, before every single operation that changes something
/// on the disk; then one that does not.
class CrashTest : public tests::SyncTest {
protected:
    /// Whether the pass ended at its operation `number`, from which on the disk does nothing any more.
    bool CrashesAt(int number, const std::function<void()>& pass) {
        std::atomic<int> operations{0};
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
        }
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

}  // namespace
