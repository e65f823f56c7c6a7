#include "client/sync/pull/PullDecision.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

namespace {

using ovsync::pass::LocalState;
using ovsync::pass::RemoteState;
using ovsync::pull::DecidePull;
using ovsync::pull::PullSituation;
using ovsync::pull::PullStep;

const LocalState LocalStates[] = {LocalState::Nothing, LocalState::Unchanged, LocalState::Changed,
                                  LocalState::Unknown, LocalState::Folder,    LocalState::Other};
const RemoteState RemoteStates[] = {RemoteState::Nothing, RemoteState::Same, RemoteState::New, RemoteState::Folder};

/// Calls `check` with every situation that can be.
template <typename Check>
void ForEverySituation(Check check) {
    for (const LocalState here : LocalStates) {
        for (const RemoteState there : RemoteStates) {
            for (const bool hasRecord : {false, true}) {
                const bool needsRecord =
                    here == LocalState::Unchanged || here == LocalState::Changed || there == RemoteState::Same;
                if ((needsRecord && !hasRecord) || (here == LocalState::Unknown && hasRecord)) {
                    continue;
                }
                for (const bool isSameContent : {false, true}) {
                    for (const bool isBesideAlready : {false, true}) {
                        PullSituation situation;
                        situation.here = here;
                        situation.there = there;
                        situation.hasRecord = hasRecord;
                        situation.isSameContent = isSameContent;
                        situation.isBesideAlready = isBesideAlready;
                        check(situation);
                    }
                }
            }
        }
    }
}

/// The table of docs/sync.md.
PullStep Expected(const PullSituation& s) {
    const std::map<std::tuple<LocalState, RemoteState>, PullStep> table = {
        {{LocalState::Nothing, RemoteState::Same}, PullStep::Fetch},
        {{LocalState::Nothing, RemoteState::New}, PullStep::Fetch},
        {{LocalState::Unchanged, RemoteState::Nothing}, PullStep::Delete},
        {{LocalState::Unchanged, RemoteState::Folder}, PullStep::Delete},
        {{LocalState::Unchanged, RemoteState::Same}, PullStep::Nothing},
        {{LocalState::Unchanged, RemoteState::New}, PullStep::Replace},
        {{LocalState::Changed, RemoteState::Nothing}, PullStep::KeepChanged},
        {{LocalState::Changed, RemoteState::Folder}, PullStep::KeepChanged},
        {{LocalState::Changed, RemoteState::Same}, PullStep::Nothing},
        {{LocalState::Changed, RemoteState::New}, PullStep::FetchBeside},
        {{LocalState::Unknown, RemoteState::New}, PullStep::FetchBeside},
        {{LocalState::Folder, RemoteState::Same}, PullStep::Blocked},
        {{LocalState::Folder, RemoteState::New}, PullStep::Blocked},
        {{LocalState::Other, RemoteState::Same}, PullStep::Blocked},
        {{LocalState::Other, RemoteState::New}, PullStep::Blocked},
    };
    const auto found = table.find({s.here, s.there});
    if (found == table.end()) {
        return s.hasRecord ? PullStep::ForgetRecord : PullStep::Nothing;
    }
    const bool isFileHere = s.here == LocalState::Unchanged || found->second == PullStep::FetchBeside;
    if (s.there == RemoteState::New && isFileHere && s.isSameContent) {
        return PullStep::Record;
    }
    return found->second == PullStep::FetchBeside && s.isBesideAlready ? PullStep::StillBeside : found->second;
}

TEST(PullDecisionTest, EverySituationHasItsStep) {
    int situations = 0;
    ForEverySituation([&](const PullSituation& s) {
        EXPECT_EQ(DecidePull(s), Expected(s))
            << "here " << static_cast<int>(s.here) << " there " << static_cast<int>(s.there) << " record "
            << s.hasRecord << " same " << s.isSameContent << " beside " << s.isBesideAlready;
        ++situations;
    });
    EXPECT_EQ(situations, 128);
}

TEST(PullDecisionTest, NothingIsReplacedOrDeletedThatIsNotAsItsRecordSays) {
    ForEverySituation([](const PullSituation& s) {
        const PullStep step = DecidePull(s);
        if (s.here != LocalState::Unchanged) {
            EXPECT_NE(step, PullStep::Replace);
            EXPECT_NE(step, PullStep::Delete);
        }
        if (s.here != LocalState::Nothing) {
            EXPECT_NE(step, PullStep::Fetch);
        }
    });
}

}  // namespace
