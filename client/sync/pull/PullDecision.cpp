#include "client/sync/pull/PullDecision.h"

namespace ovsync {
namespace pull {

using pass::LocalState;
using pass::RemoteState;

namespace {

/// The service has no file of this name, and perhaps a folder.
PullStep DecideGone(const PullSituation& situation) {
    if (!situation.hasRecord) {
        return PullStep::Nothing;
    }
    switch (situation.here) {
        case LocalState::Unchanged:
            return PullStep::Delete;
        case LocalState::Changed:
            return PullStep::KeepChanged;
        default:
            return PullStep::ForgetRecord;
    }
}

PullStep DecideConflict(const PullSituation& situation) {
    if (situation.isSameContent) {
        return PullStep::Record;
    }
    return situation.isBesideAlready ? PullStep::StillBeside : PullStep::FetchBeside;
}

}  // namespace

PullStep DecidePull(const PullSituation& situation) {
    if (situation.there == RemoteState::Nothing || situation.there == RemoteState::Folder) {
        return DecideGone(situation);
    }
    switch (situation.here) {
        case LocalState::Nothing:
            return PullStep::Fetch;
        case LocalState::Folder:
        case LocalState::Other:
            return PullStep::Blocked;
        case LocalState::Unchanged:
            if (situation.there == RemoteState::Same) {
                return PullStep::Nothing;
            }
            // The newest content may be here alone.
            if (situation.there == RemoteState::Older) {
                return DecideConflict(situation);
            }
            return situation.isSameContent ? PullStep::Record : PullStep::Replace;
        case LocalState::Changed:
            return situation.there == RemoteState::Same ? PullStep::Nothing : DecideConflict(situation);
        default:
            return DecideConflict(situation);
    }
}

}  // namespace pull
}  // namespace ovsync
