#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>

#include "tests/sync-proof/Changes.h"
#include "tests/sync-proof/Pass.h"
#include "tests/sync-proof/Setting.h"
#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

class KillTest : public testing::Test {
protected:
    KillTest() {
        sides.StartService();
        sides.there.Write("both", "both");
        changes.Settle();
    }

    /// A pull after one that was killed.
    void ExpectPullToFinish() {
        changes.ExpectOldOrNew(changes.HereBefore(), sides.ImageHere());
        const auto pull = sides.Pull({"--delete"});
        EXPECT_EQ(pull->ExitCode(), 1) << pull->Text();
        changes.ExpectPulled();
    }

    /// A push after one that was killed, or that lost the service.
    void ExpectPushToFinish() {
        EXPECT_EQ(Differences(sides.ImageHere(), changes.HereBefore()), "");
        changes.ExpectOldOrNew(changes.ThereBefore(), sides.ImageThere());
        const auto push = sides.Push();
        EXPECT_EQ(push->ExitCode(), 1) << push->Text();
        changes.ExpectPushed();
    }

    TwoSides sides;
    Changes changes{sides};
    const unsigned seed = std::random_device()();
    std::mt19937 random{seed};
};

/// Each test kills at every so many steps; over several runs at all of them, because the first is drawn.
class StepKillTest : public KillTest {
protected:
    const int stride = StepStride();
    int point = 1 + static_cast<int>(random() % static_cast<unsigned>(stride));
};

TEST_F(StepKillTest, APullThatIsKilledBeforeAnyStepIsFinishedByTheNext) {
    int exitCode = -SIGKILL;
    for (; exitCode == -SIGKILL && !HasFailure(); point += stride) {
        SCOPED_TRACE("before step " + std::to_string(point));
        changes.MakeForPull();
        exitCode = sides.Pull({"--delete", "-j", "1"}, TwoSides::KilledAt(point))->ExitCode();
        ExpectPullToFinish();
        changes.Settle();
    }
    EXPECT_EQ(exitCode, 1);
    EXPECT_GT(point, 50);
}

TEST_F(StepKillTest, APushThatIsKilledBeforeAnyStepIsFinishedByTheNext) {
    int exitCode = -SIGKILL;
    for (; exitCode == -SIGKILL && !HasFailure(); point += stride) {
        SCOPED_TRACE("before step " + std::to_string(point));
        changes.MakeForPush();
        exitCode = sides.Push({"-j", "1"}, TwoSides::KilledAt(point))->ExitCode();
        ExpectPushToFinish();
        changes.Settle();
    }
    EXPECT_EQ(exitCode, 1);
    EXPECT_GT(point, 20);
}

TEST_F(StepKillTest, APushWhoseServiceIsKilledBeforeAnyStepIsFinishedByTheNext) {
    int killed = 0;
    bool isOver = false;
    for (; !isOver && !HasFailure(); point += stride) {
        SCOPED_TRACE("before step " + std::to_string(point));
        changes.MakeForPush();
        try {
            sides.StartService({}, TwoSides::KilledAt(point));
        } catch (const std::runtime_error&) {
            // Killed before it served.
            sides.StartService();
            ExpectPushToFinish();
            changes.Settle();
            continue;
        }
        const auto push = sides.Push({"-j", "1"});
        isOver = push->ExitCode() == 1;
        killed += isOver ? 0 : 1;
        EXPECT_TRUE(isOver || push->ExitCode() == 3) << push->Text();
        if (!isOver) {
            EXPECT_THAT(push->Text(), AnyOf(HasSubstr("\"event\":\"failed\""), HasSubstr("\"error\":")));
        }
        sides.StartService();
        ExpectPushToFinish();
        changes.Settle();
    }
    EXPECT_GT(killed, 20 / stride);
}

TEST_F(StepKillTest, ASyncThatIsKilledBeforeAnyStepIsFinishedByTheNext) {
    int exitCode = -SIGKILL;
    for (; exitCode == -SIGKILL && !HasFailure(); point += stride) {
        SCOPED_TRACE("before step " + std::to_string(point));
        changes.MakeForSync();
        exitCode = sides.Sync({"-j", "1"}, TwoSides::KilledAt(point))->ExitCode();
        const auto sync = sides.Sync();
        EXPECT_EQ(sync->ExitCode(), 0) << sync->Text();
        changes.ExpectSynced();
    }
    EXPECT_EQ(exitCode, 0);
    EXPECT_GT(point, 50);
}

TEST_F(StepKillTest, ASyncWhoseServiceIsKilledBeforeAnyStepIsFinishedByTheNext) {
    bool isOver = false;
    for (; !isOver && !HasFailure(); point += stride) {
        SCOPED_TRACE("before step " + std::to_string(point));
        changes.MakeForSync();
        try {
            sides.StartService({}, TwoSides::KilledAt(point));
            const auto sync = sides.Sync({"-j", "1"});
            isOver = sync->ExitCode() == 0;
            EXPECT_TRUE(isOver || sync->ExitCode() == 3) << sync->Text();
        } catch (const std::runtime_error&) {
            // Killed before it served.
        }
        sides.StartService();
        const auto sync = sides.Sync();
        EXPECT_EQ(sync->ExitCode(), 0) << sync->Text();
        changes.ExpectSynced();
    }
    EXPECT_GT(point, 20);
}

class RandomKillTest : public KillTest {
protected:
    /// How long such a pass takes. Not the first one, which lists everything.
    void Measure(const std::function<void()>& prepare, const std::function<void()>& pass) {
        for (int i = 0; i < 2; ++i) {
            prepare();
            const auto start = std::chrono::steady_clock::now();
            pass();
            duration = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
            changes.Settle();
        }
    }

    /// Whether the pass was killed at some moment. One that was over before makes the next kills come earlier: passes
    /// that were measured on a busy machine take less time afterwards.
    bool IsKilledAtAnyMoment(Pass& pass) {
        std::this_thread::sleep_for(duration * (random() % 1000) / 1000);
        pass.Signal(SIGKILL);
        if (pass.ExitCode() == -SIGKILL) {
            return true;
        }
        duration = duration * 3 / 4;
        return false;
    }

    std::chrono::microseconds duration{0};
    const int times = Setting("OVSYNC_PROOF_KILLS", 10);
};

TEST_F(RandomKillTest, APullThatIsKilledAtAnyMomentIsFinishedByTheNext) {
    Measure([this] { changes.MakeForPull(); }, [this] { sides.Pull({"--delete"})->ExitCode(); });
    for (int killed = 0; killed < times && !HasFailure();) {
        SCOPED_TRACE("after " + std::to_string(killed) + " kills");
        changes.MakeForPull();
        killed += IsKilledAtAnyMoment(*sides.Pull({"--delete"})) ? 1 : 0;
        ExpectPullToFinish();
        changes.Settle();
    }
}

TEST_F(RandomKillTest, APushThatIsKilledAtAnyMomentIsFinishedByTheNext) {
    Measure([this] { changes.MakeForPush(); }, [this] { sides.Push()->ExitCode(); });
    for (int killed = 0; killed < times && !HasFailure();) {
        SCOPED_TRACE("after " + std::to_string(killed) + " kills");
        changes.MakeForPush();
        killed += IsKilledAtAnyMoment(*sides.Push()) ? 1 : 0;
        ExpectPushToFinish();
        changes.Settle();
    }
}

TEST_F(RandomKillTest, APushWhoseServiceIsKilledAtAnyMomentIsFinishedByTheNext) {
    Measure([this] { changes.MakeForPush(); }, [this] { sides.Push()->ExitCode(); });
    for (int i = 1; i <= times && !HasFailure(); ++i) {
        SCOPED_TRACE("the kill number " + std::to_string(i));
        changes.MakeForPush();
        const auto push = sides.Push();
        std::this_thread::sleep_for(duration * (random() % 1000) / 1000);
        sides.Service().End(SIGKILL);
        EXPECT_THAT(push->ExitCode(), AnyOf(1, 3)) << push->Text();
        sides.StartService();
        ExpectPushToFinish();
        changes.Settle();
    }
}

}  // namespace
}  // namespace syncproof
