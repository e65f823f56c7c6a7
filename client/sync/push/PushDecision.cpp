#include "client/sync/push/PushDecision.h"

namespace ovsync {
namespace push {

using pass::LocalState;
using pass::RemoteState;

namespace {

bool IsFile(RemoteState state) {
    return state == RemoteState::Same || state == RemoteState::New || state == RemoteState::Older;
}

/// There is no file here.
PushStep DecideWithoutFile(const PushSituation& situation) {
    if (situation.here != LocalState::Nothing && IsFile(situation.there)) {
        return PushStep::Blocked;
    }
    if (!situation.hasRecord) {
        return PushStep::Nothing;
    }
    return IsFile(situation.there) ? PushStep::TellDeletedHere : PushStep::ForgetRecord;
}

PushStep DecideGone(LocalState here) {
    switch (here) {
        case LocalState::Unchanged:
            return PushStep::TellGone;
        case LocalState::Changed:
            return PushStep::ConflictWithDeletion;
        default:
            return PushStep::SendNew;
    }
}

PushStep DecideNew(const PushSituation& situation) {
    if (situation.isSameContent) {
        return PushStep::Record;
    }
    if (situation.here == LocalState::Unchanged && situation.there == RemoteState::New) {
        return PushStep::TellNewerThere;
    }
    return situation.isResolved ? PushStep::SendChanged : PushStep::Conflict;
}

}  // namespace

PushStep DecidePush(const PushSituation& situation) {
    const bool isFileHere = situation.here == LocalState::Unchanged || situation.here == LocalState::Changed ||
                            situation.here == LocalState::Unknown;
    if (!isFileHere) {
        return DecideWithoutFile(situation);
    }
    switch (situation.there) {
        case RemoteState::Nothing:
            return DecideGone(situation.here);
        case RemoteState::Same:
            return situation.here == LocalState::Changed ? PushStep::SendChanged : PushStep::Nothing;
        case RemoteState::New:
        case RemoteState::Older:
            return DecideNew(situation);
        case RemoteState::Folder:
            return PushStep::Blocked;
    }
    return PushStep::Nothing;
}

}  // namespace push
}  // namespace ovsync
