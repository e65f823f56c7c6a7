#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <random>
#include <string>

#include "tests/sync-proof/Setting.h"
#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

namespace fs = std::filesystem;

using testing::AnyOf;

/// Somebody saves a file between two steps of a pass.
class RaceTest : public testing::Test {
protected:
    RaceTest() {
        sides.StartService();
        sides.there.Write("replaced", "0");
        sides.there.Write("removed 0", "0");
        EXPECT_EQ(sides.Pull()->ExitCode(), 0);
    }

    int StepsOf(Pass& pass) const {
        EXPECT_EQ(pass.ExitCode(), 0) << pass.Text();
        return std::stoi(aside.Read("count"));
    }

    /// At step `point` of the next pass, `content` is saved as `name`; after `killDistance` more steps, if it is not 0,
    /// the pass is killed.
    Pass::Environment SavingAt(int point, const std::string& name, const std::string& content, int killDistance) {
        aside.Write("saved", content);
        return TwoSides::MovingAt(point, aside / "saved", sides.here / name,
                                  killDistance == 0 ? 0 : point + killDistance);
    }

    void ExpectSaved(const std::string& content, Pass& pass) const {
        EXPECT_EQ(ContentsOf(sides.ImageHere()).count(content), 1U) << pass.Text();
    }

    TwoSides sides;
    const service::test::TemporaryFolder aside;
    const Pass::Environment counting = TwoSides::CountingInto(aside / "count");
    std::mt19937 random{std::random_device()()};
    const int stride = StepStride();
    const int first = 1 + static_cast<int>(random() % static_cast<unsigned>(stride));
};

class RaceWithPullTest : public RaceTest, public testing::WithParamInterface<int> {
protected:
    /// What the service makes of each round.
    void ChangeThere(int round) {
        sides.there.Write("replaced", std::to_string(round));
        sides.there.Write("new " + std::to_string(round), "new");
        sides.there.Write("removed " + std::to_string(round), std::to_string(round));
        fs::remove(sides.there / ("removed " + std::to_string(round - 1)));
    }
};

TEST_P(RaceWithPullTest, WhatIsSavedAtAnyStepOfAPullIsKept) {
    ChangeThere(1);
    const int steps = StepsOf(*sides.Pull({"--delete", "-j", "1"}, counting));
    EXPECT_GT(steps, 20);
    int round = 1;
    for (const std::string name : {"replaced", "new ", "removed "}) {
        for (int point = first; point <= steps && !HasFailure(); point += stride) {
            ChangeThere(++round);
            const int nameRound = name == "removed " ? round - 1 : round;
            const std::string path = name == "replaced" ? name : name + std::to_string(nameRound);
            const std::string saved = "saved at step " + std::to_string(point) + " of round " + std::to_string(round);
            SCOPED_TRACE(path);
            SCOPED_TRACE(saved);
            const auto pull = sides.Pull({"--delete", "-j", "1"}, SavingAt(point, path, saved, GetParam()));
            EXPECT_THAT(pull->ExitCode(), AnyOf(0, 1, -SIGKILL)) << pull->Text();
            if (fs::exists(aside / "saved")) {
                // This pass had fewer steps.
                fs::remove(aside / "saved");
            } else {
                ExpectSaved(saved, *pull);
                const auto next = sides.Pull({"--delete"});
                EXPECT_THAT(next->ExitCode(), AnyOf(0, 1)) << next->Text();
                ExpectSaved(saved, *next);
                EXPECT_EQ(sides.Leftovers(), "");
            }
            // The next round begins in step.
            for (const auto& [path_, content] : sides.ImageHere()) {
                fs::remove_all(sides.here / path_);
            }
            const auto settling = sides.Pull({"--delete"});
            EXPECT_EQ(settling->ExitCode(), 0) << settling->Text();
            EXPECT_EQ(Differences(sides.ImageHere(), sides.ImageThere()), "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(KilledAfter, RaceWithPullTest, testing::Values(0, 1, 2, 3), testing::PrintToStringParamName());

TEST_F(RaceTest, WhatIsSavedAtAnyStepOfAPushIsSentInTheEnd) {
    const auto change = [this](int round) {
        sides.here.Write("replaced", std::to_string(round));
        sides.here.Write("new " + std::to_string(round), "new");
    };
    change(1);
    const int steps = StepsOf(*sides.Push({"-j", "1"}, counting));
    EXPECT_GT(steps, 10);
    int round = 1;
    for (const std::string name : {"replaced", "new "}) {
        for (int point = first; point <= steps && !HasFailure(); point += stride) {
            change(++round);
            const std::string path = name == "replaced" ? name : name + std::to_string(round);
            const std::string saved = "saved at step " + std::to_string(point) + " of round " + std::to_string(round);
            SCOPED_TRACE(path);
            SCOPED_TRACE(saved);
            const auto push = sides.Push({"-j", "1"}, SavingAt(point, path, saved, 0));
            EXPECT_THAT(push->ExitCode(), AnyOf(0, 1)) << push->Text();
            fs::remove(aside / "saved");
            const auto next = sides.Push();
            EXPECT_EQ(next->ExitCode(), 0) << push->Text() << next->Text();
            EXPECT_EQ(MissingFrom(sides.ImageThere(), sides.ImageHere()), std::set<std::string>()) << push->Text();
        }
    }
}

}  // namespace
}  // namespace syncproof
