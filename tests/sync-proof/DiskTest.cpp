#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <ostream>
#include <random>
#include <string>

#include "tests/sync-proof/Changes.h"
#include "tests/sync-proof/Setting.h"
#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

struct Trouble {
    const char* name;
    int error;
    /// Whether it stays until the end of the pass.
    bool lasts;
    /// What the records' library calls it.
    const char* nameOfSqlite;
};

void PrintTo(const Trouble& trouble, std::ostream* stream) {
    *stream << trouble.name;
}

/// Lets steps by which a pass changes something on the disk fail; over several runs each, because the first is drawn.
class DiskTest : public testing::TestWithParam<Trouble> {
protected:
    DiskTest() {
        sides.StartService();
        sides.there.Write("both", "both");
        changes.Settle();
    }

    Pass::Environment Failing(int point) const {
        return TwoSides::FailingAt(point, GetParam().error, GetParam().lasts);
    }

    /// A pass either does all that it can or says what the disk said.
    void ExpectDoneOrTold(Pass& pass, const FolderImage& changed) const {
        EXPECT_THAT(pass.ExitCode(), AnyOf(1, 3)) << pass.Text();
        if (const auto missing = MissingFrom(changed, changes.Wanted()); !missing.empty()) {
            EXPECT_THAT(pass.Text(),
                        AnyOf(HasSubstr(std::strerror(GetParam().error)), HasSubstr(GetParam().nameOfSqlite)))
                << *missing.begin();
        }
    }

    int StepsOf(Pass& pass) const {
        EXPECT_EQ(pass.ExitCode(), 1) << pass.Text();
        return std::stoi(count.Read("count"));
    }

    TwoSides sides;
    Changes changes{sides};
    std::mt19937 random{std::random_device()()};
    const service::test::TemporaryFolder count;
    const Pass::Environment counting = TwoSides::CountingInto(count / "count");
    const int stride = StepStride();
    const int first = 1 + static_cast<int>(random() % static_cast<unsigned>(stride));
};

TEST_P(DiskTest, APullLosesNothingAndSaysWhatTheDiskSaid) {
    changes.MakeForPull();
    const int steps = StepsOf(*sides.Pull({"--delete", "-j", "1"}, counting));
    changes.Settle();
    EXPECT_GT(steps, 50);
    for (int point = first; point <= steps && !HasFailure(); point += stride) {
        SCOPED_TRACE("step " + std::to_string(point));
        changes.MakeForPull();
        const auto pull = sides.Pull({"--delete", "-j", "1"}, Failing(point));
        pull->ExitCode();
        ExpectDoneOrTold(*pull, sides.ImageHere());
        changes.ExpectOldOrNew(changes.HereBefore(), sides.ImageHere());
        const auto next = sides.Pull({"--delete"});
        EXPECT_EQ(next->ExitCode(), 1) << next->Text();
        changes.ExpectPulled();
        changes.Settle();
    }
}

TEST_P(DiskTest, APushLosesNothingAndSaysWhatTheDiskSaid) {
    changes.MakeForPush();
    const int steps = StepsOf(*sides.Push({"-j", "1"}, counting));
    changes.Settle();
    EXPECT_GT(steps, 20);
    for (int point = first; point <= steps && !HasFailure(); point += stride) {
        SCOPED_TRACE("step " + std::to_string(point));
        changes.MakeForPush();
        const auto push = sides.Push({"-j", "1"}, Failing(point));
        push->ExitCode();
        ExpectDoneOrTold(*push, sides.ImageThere());
        EXPECT_EQ(Differences(sides.ImageHere(), changes.HereBefore()), "");
        changes.ExpectOldOrNew(changes.ThereBefore(), sides.ImageThere());
        const auto next = sides.Push();
        EXPECT_EQ(next->ExitCode(), 1) << next->Text();
        changes.ExpectPushed();
        changes.Settle();
    }
}

INSTANTIATE_TEST_SUITE_P(Each, DiskTest,
                         testing::Values(Trouble{"Full", ENOSPC, true, "database or disk is full"},
                                         Trouble{"Failing", EIO, false, "disk I/O error"},
                                         Trouble{"Forbidden", EACCES, false, "disk I/O error"}),
                         [](const auto& trouble) { return trouble.param.name; });

}  // namespace
}  // namespace syncproof
