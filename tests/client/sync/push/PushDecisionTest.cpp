#include "client/sync/push/PushDecision.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

namespace {

using ovsync::pass::LocalState;
using ovsync::pass::RemoteState;
using ovsync::push::DecidePush;
using ovsync::push::PushSituation;
using ovsync::push::PushStep;

/// The table of docs/sync.md.
PushStep Expected(const PushSituation& s) {
    const std::map<std::tuple<LocalState, RemoteState>, PushStep> table = {
        {{LocalState::Unchanged, RemoteState::Nothing}, PushStep::TellGone},
        {{LocalState::Unchanged, RemoteState::Same}, PushStep::Nothing},
        {{LocalState::Unchanged, RemoteState::New}, PushStep::TellNewerThere},
        {{LocalState::Unchanged, RemoteState::Folder}, PushStep::Blocked},
        {{LocalState::Changed, RemoteState::Nothing}, PushStep::ConflictWithDeletion},
        {{LocalState::Changed, RemoteState::Same}, PushStep::SendChanged},
        {{LocalState::Changed, RemoteState::New}, PushStep::Conflict},
        {{LocalState::Changed, RemoteState::Folder}, PushStep::Blocked},
        {{LocalState::Unknown, RemoteState::Nothing}, PushStep::SendNew},
        {{LocalState::Unknown, RemoteState::New}, PushStep::Conflict},
        {{LocalState::Unknown, RemoteState::Folder}, PushStep::Blocked},
        {{LocalState::Folder, RemoteState::Same}, PushStep::Blocked},
        {{LocalState::Folder, RemoteState::New}, PushStep::Blocked},
        {{LocalState::Other, RemoteState::Same}, PushStep::Blocked},
        {{LocalState::Other, RemoteState::New}, PushStep::Blocked},
    };
    const auto found = table.find({s.here, s.there});
    if (found == table.end()) {
        const bool isFileThere = s.there == RemoteState::Same || s.there == RemoteState::New;
        const PushStep known = isFileThere ? PushStep::TellDeletedHere : PushStep::ForgetRecord;
        return s.hasRecord ? known : PushStep::Nothing;
    }
    const bool isFileHere = s.here != LocalState::Folder && s.here != LocalState::Other;
    if (s.there == RemoteState::New && isFileHere && s.isSameContent) {
        return PushStep::Record;
    }
    return found->second == PushStep::Conflict && s.isResolved ? PushStep::SendChanged : found->second;
}

TEST(PushDecisionTest, EverySituationHasItsStep) {
    for (const LocalState here : {LocalState::Nothing, LocalState::Unchanged, LocalState::Changed, LocalState::Unknown,
                                  LocalState::Folder, LocalState::Other}) {
        for (const RemoteState there :
             {RemoteState::Nothing, RemoteState::Same, RemoteState::New, RemoteState::Folder}) {
            for (int bits = 0; bits < 8; ++bits) {
                PushSituation s;
                s.here = here;
                s.there = there;
                s.hasRecord = (bits & 1) != 0;
                s.isSameContent = (bits & 2) != 0;
                s.isResolved = (bits & 4) != 0;
                const bool needsRecord =
                    here == LocalState::Unchanged || here == LocalState::Changed || there == RemoteState::Same;
                if ((needsRecord && !s.hasRecord) || (here == LocalState::Unknown && s.hasRecord)) {
                    continue;
                }
                EXPECT_EQ(DecidePush(s), Expected(s))
                    << "here " << static_cast<int>(here) << " there " << static_cast<int>(there) << " bits " << bits;
            }
        }
    }
}

}  // namespace
