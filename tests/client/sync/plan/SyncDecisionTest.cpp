#include "client/sync/plan/SyncDecision.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using ovsync::pass::LocalState;
using ovsync::pass::RemoteState;
using ovsync::plan::Decide;
using ovsync::plan::Direction;
using ovsync::plan::FileSituation;
using ovsync::plan::SyncStep;
using ovsync::plan::Winner;

constexpr LocalState LocalStates[] = {LocalState::Nothing, LocalState::Unchanged, LocalState::Changed,
                                      LocalState::Unknown, LocalState::Folder,    LocalState::Other};
constexpr RemoteState RemoteStates[] = {RemoteState::Nothing, RemoteState::Same, RemoteState::New, RemoteState::Older,
                                        RemoteState::Folder};

/// A row of a table of docs/sync.md.
struct Row {
    const char* name;
    LocalState here;
    RemoteState there;
    bool hasRecord;
    SyncStep both;
    SyncStep pull;
    SyncStep push;
};

bool NeedsRecord(LocalState here, RemoteState there) {
    return here == LocalState::Unchanged || here == LocalState::Changed || there == RemoteState::Same ||
           there == RemoteState::Older;
}

constexpr Row Rows[] = {
    {"NothingAnywhere", LocalState::Nothing, RemoteState::Nothing, false, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"GoneOnBothSides", LocalState::Nothing, RemoteState::Nothing, true, SyncStep::ForgetRecord, SyncStep::ForgetRecord,
     SyncStep::ForgetRecord},
    {"GoneHere", LocalState::Nothing, RemoteState::Same, true, SyncStep::DeleteThere, SyncStep::Fetch,
     SyncStep::DeleteThere},
    {"NewThere", LocalState::Nothing, RemoteState::New, false, SyncStep::Fetch, SyncStep::Fetch, SyncStep::Nothing},
    {"GoneHereAndChangedThere", LocalState::Nothing, RemoteState::New, true, SyncStep::Fetch, SyncStep::Fetch,
     SyncStep::TellDeletedHere},
    {"GoneHereAndOlderThere", LocalState::Nothing, RemoteState::Older, true, SyncStep::Fetch, SyncStep::Fetch,
     SyncStep::TellDeletedHere},
    {"AFolderThere", LocalState::Nothing, RemoteState::Folder, false, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"GoneHereAndAFolderThere", LocalState::Nothing, RemoteState::Folder, true, SyncStep::ForgetRecord,
     SyncStep::ForgetRecord, SyncStep::ForgetRecord},
    {"GoneThere", LocalState::Unchanged, RemoteState::Nothing, true, SyncStep::DeleteHere, SyncStep::DeleteHere,
     SyncStep::TellGone},
    {"UnchangedOnBothSides", LocalState::Unchanged, RemoteState::Same, true, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"ChangedThere", LocalState::Unchanged, RemoteState::New, true, SyncStep::Replace, SyncStep::Replace,
     SyncStep::TellNewerThere},
    {"RestoredThere", LocalState::Unchanged, RemoteState::Older, true, SyncStep::FetchBeside, SyncStep::FetchBeside,
     SyncStep::TellConflict},
    {"BecameAFolderThere", LocalState::Unchanged, RemoteState::Folder, true, SyncStep::DeleteHere, SyncStep::DeleteHere,
     SyncStep::Blocked},
    {"ChangedHereAndGoneThere", LocalState::Changed, RemoteState::Nothing, true, SyncStep::SendNew,
     SyncStep::KeepChanged, SyncStep::TellChangedAndGone},
    {"ChangedHere", LocalState::Changed, RemoteState::Same, true, SyncStep::SendChanged, SyncStep::Nothing,
     SyncStep::SendChanged},
    {"ChangedOnBothSides", LocalState::Changed, RemoteState::New, true, SyncStep::FetchBeside, SyncStep::FetchBeside,
     SyncStep::TellConflict},
    {"ChangedHereAndRestoredThere", LocalState::Changed, RemoteState::Older, true, SyncStep::FetchBeside,
     SyncStep::FetchBeside, SyncStep::TellConflict},
    {"ChangedHereAndAFolderThere", LocalState::Changed, RemoteState::Folder, true, SyncStep::Blocked,
     SyncStep::KeepChanged, SyncStep::Blocked},
    {"NewHere", LocalState::Unknown, RemoteState::Nothing, false, SyncStep::SendNew, SyncStep::Nothing,
     SyncStep::SendNew},
    {"NewOnBothSides", LocalState::Unknown, RemoteState::New, false, SyncStep::FetchBeside, SyncStep::FetchBeside,
     SyncStep::TellConflict},
    {"NewHereAndAFolderThere", LocalState::Unknown, RemoteState::Folder, false, SyncStep::Blocked, SyncStep::Nothing,
     SyncStep::Blocked},
    {"AFolderHere", LocalState::Folder, RemoteState::Nothing, false, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"BecameAFolderHereAndGoneThere", LocalState::Folder, RemoteState::Nothing, true, SyncStep::ForgetRecord,
     SyncStep::ForgetRecord, SyncStep::ForgetRecord},
    {"BecameAFolderHere", LocalState::Folder, RemoteState::Same, true, SyncStep::DeleteThere, SyncStep::Blocked,
     SyncStep::DeleteThere},
    {"AFolderHereAndAFileThere", LocalState::Folder, RemoteState::New, false, SyncStep::Blocked, SyncStep::Blocked,
     SyncStep::Blocked},
    {"BecameAFolderHereAndChangedThere", LocalState::Folder, RemoteState::New, true, SyncStep::Blocked,
     SyncStep::Blocked, SyncStep::Blocked},
    {"BecameAFolderHereAndOlderThere", LocalState::Folder, RemoteState::Older, true, SyncStep::Blocked,
     SyncStep::Blocked, SyncStep::Blocked},
    {"AFolderOnBothSides", LocalState::Folder, RemoteState::Folder, false, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"BecameAFolderOnBothSides", LocalState::Folder, RemoteState::Folder, true, SyncStep::ForgetRecord,
     SyncStep::ForgetRecord, SyncStep::ForgetRecord},
    {"ALinkHere", LocalState::Other, RemoteState::Nothing, false, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"BecameALinkHereAndGoneThere", LocalState::Other, RemoteState::Nothing, true, SyncStep::ForgetRecord,
     SyncStep::ForgetRecord, SyncStep::ForgetRecord},
    {"BecameALinkHere", LocalState::Other, RemoteState::Same, true, SyncStep::Blocked, SyncStep::Blocked,
     SyncStep::Blocked},
    {"ALinkHereAndAFileThere", LocalState::Other, RemoteState::New, false, SyncStep::Blocked, SyncStep::Blocked,
     SyncStep::Blocked},
    {"BecameALinkHereAndChangedThere", LocalState::Other, RemoteState::New, true, SyncStep::Blocked, SyncStep::Blocked,
     SyncStep::Blocked},
    {"BecameALinkHereAndOlderThere", LocalState::Other, RemoteState::Older, true, SyncStep::Blocked, SyncStep::Blocked,
     SyncStep::Blocked},
    {"ALinkHereAndAFolderThere", LocalState::Other, RemoteState::Folder, false, SyncStep::Nothing, SyncStep::Nothing,
     SyncStep::Nothing},
    {"BecameALinkHereAndAFolderThere", LocalState::Other, RemoteState::Folder, true, SyncStep::ForgetRecord,
     SyncStep::ForgetRecord, SyncStep::ForgetRecord},
};

FileSituation SituationOf(const Row& row) {
    FileSituation situation;
    situation.here = row.here;
    situation.there = row.there;
    situation.hasRecord = row.hasRecord;
    return situation;
}

/// Whether both sides have a file, and neither is known to be the older one of the other.
bool CanBeConflict(const Row& row) {
    return row.both == SyncStep::FetchBeside;
}

class SyncDecisionTest : public testing::TestWithParam<Row> {};

TEST_P(SyncDecisionTest, HasItsSteps) {
    const FileSituation situation = SituationOf(GetParam());
    EXPECT_EQ(Decide(Direction::Both, situation), GetParam().both);
    EXPECT_EQ(Decide(Direction::Pull, situation), GetParam().pull);
    EXPECT_EQ(Decide(Direction::Push, situation), GetParam().push);
}

TEST_P(SyncDecisionTest, TheSameContentIsOnlyRecorded) {
    FileSituation situation = SituationOf(GetParam());
    situation.isSameContent = true;
    for (const bool isOpen : {false, true}) {
        situation.isBesideAlready = isOpen;
        situation.winner = isOpen ? Winner::Here : Winner::Nobody;
        const bool isRecorded = CanBeConflict(GetParam()) || GetParam().both == SyncStep::Replace;
        for (const Direction direction : {Direction::Both, Direction::Pull, Direction::Push}) {
            const SyncStep step = Decide(direction, situation);
            EXPECT_EQ(step == SyncStep::Record, isRecorded);
        }
    }
}

TEST_P(SyncDecisionTest, AConflictIsPutBesideOnceAndEndsWhenTheCopyIsGone) {
    if (!CanBeConflict(GetParam())) {
        return;
    }
    FileSituation situation = SituationOf(GetParam());
    situation.isBesideAlready = true;
    EXPECT_EQ(Decide(Direction::Both, situation), SyncStep::StillBeside);
    EXPECT_EQ(Decide(Direction::Pull, situation), SyncStep::StillBeside);
    EXPECT_EQ(Decide(Direction::Push, situation), SyncStep::TellConflict);
    situation.isResolved = true;
    EXPECT_EQ(Decide(Direction::Both, situation), SyncStep::SendChanged);
    EXPECT_EQ(Decide(Direction::Pull, situation), SyncStep::StillBeside);
    EXPECT_EQ(Decide(Direction::Push, situation), SyncStep::SendChanged);
}

TEST_P(SyncDecisionTest, AConflictCanHaveAWinner) {
    FileSituation situation = SituationOf(GetParam());
    situation.winner = Winner::There;
    EXPECT_EQ(Decide(Direction::Both, situation), CanBeConflict(GetParam()) ? SyncStep::Replace : GetParam().both);
    situation.winner = Winner::Here;
    EXPECT_EQ(Decide(Direction::Both, situation), CanBeConflict(GetParam()) ? SyncStep::SendOver : GetParam().both);
}

TEST_P(SyncDecisionTest, NothingIsReplacedOrDeletedThatIsNotKnown) {
    const Row& row = GetParam();
    for (const SyncStep step : {row.both, row.pull}) {
        EXPECT_TRUE(row.here == LocalState::Unchanged || (step != SyncStep::Replace && step != SyncStep::DeleteHere));
        EXPECT_TRUE(row.here == LocalState::Nothing || step != SyncStep::Fetch);
    }
    for (const SyncStep step : {row.both, row.push}) {
        EXPECT_TRUE(row.there == RemoteState::Same || (step != SyncStep::SendChanged && step != SyncStep::DeleteThere));
        EXPECT_TRUE(row.there == RemoteState::Nothing || step != SyncStep::SendNew);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, SyncDecisionTest, testing::ValuesIn(Rows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SyncDecisionTableTest, HasEverySituationOnce) {
    for (const LocalState here : LocalStates) {
        for (const RemoteState there : RemoteStates) {
            for (const bool hasRecord : {false, true}) {
                const bool isPossible =
                    (hasRecord || !NeedsRecord(here, there)) && !(hasRecord && here == LocalState::Unknown);
                int rows = 0;
                for (const Row& row : Rows) {
                    rows += row.here == here && row.there == there && row.hasRecord == hasRecord ? 1 : 0;
                }
                EXPECT_EQ(rows, isPossible ? 1 : 0)
                    << static_cast<int>(here) << ' ' << static_cast<int>(there) << ' ' << hasRecord;
            }
        }
    }
}

}  // namespace
