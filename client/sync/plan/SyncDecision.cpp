#include "client/sync/plan/SyncDecision.h"

namespace ovsync {
namespace plan {

using pass::LocalState;
using pass::RemoteState;

namespace {

SyncStep DecideConflict(const FileSituation& situation) {
    if (situation.isSameContent) {
        return SyncStep::Record;
    }
    if (situation.isResolved) {
        return SyncStep::SendChanged;
    }
    if (situation.winner != Winner::Nobody) {
        return situation.winner == Winner::Here ? SyncStep::SendOver : SyncStep::Replace;
    }
    return situation.isBesideAlready ? SyncStep::StillBeside : SyncStep::FetchBeside;
}

/// The service has no file of this name, and perhaps a folder.
SyncStep DecideGone(const FileSituation& situation) {
    const bool isFolderThere = situation.there == RemoteState::Folder;
    switch (situation.here) {
        case LocalState::Unchanged:
            return SyncStep::DeleteHere;
        case LocalState::Changed:
        case LocalState::Unknown:
            return isFolderThere ? SyncStep::Blocked : SyncStep::SendNew;
        default:
            return situation.hasRecord ? SyncStep::ForgetRecord : SyncStep::Nothing;
    }
}

SyncStep DecideSame(LocalState here) {
    switch (here) {
        case LocalState::Nothing:
        case LocalState::Folder:
            return SyncStep::DeleteThere;
        case LocalState::Changed:
            return SyncStep::SendChanged;
        case LocalState::Other:
            return SyncStep::Blocked;
        default:
            return SyncStep::Nothing;
    }
}

SyncStep DecideNew(const FileSituation& situation) {
    switch (situation.here) {
        case LocalState::Nothing:
            return SyncStep::Fetch;
        case LocalState::Folder:
        case LocalState::Other:
            return SyncStep::Blocked;
        case LocalState::Unchanged:
            // The newest content may be here alone.
            if (situation.there == RemoteState::Older) {
                return DecideConflict(situation);
            }
            return situation.isSameContent ? SyncStep::Record : SyncStep::Replace;
        default:
            return DecideConflict(situation);
    }
}

SyncStep DecideBoth(const FileSituation& situation) {
    switch (situation.there) {
        case RemoteState::Same:
            return DecideSame(situation.here);
        case RemoteState::New:
        case RemoteState::Older:
            return DecideNew(situation);
        default:
            return DecideGone(situation);
    }
}

/// What a pull makes of a step.
SyncStep HalfOfPull(SyncStep step, const FileSituation& situation) {
    switch (step) {
        case SyncStep::DeleteThere:
            return situation.here == LocalState::Nothing ? SyncStep::Fetch : SyncStep::Blocked;
        case SyncStep::SendNew:
            return situation.hasRecord ? SyncStep::KeepChanged : SyncStep::Nothing;
        case SyncStep::SendChanged:
            return situation.there == RemoteState::Same ? SyncStep::Nothing : SyncStep::StillBeside;
        case SyncStep::Blocked:
            if (situation.there == RemoteState::Folder) {
                return situation.hasRecord ? SyncStep::KeepChanged : SyncStep::Nothing;
            }
            return step;
        default:
            return step;
    }
}

/// What a push makes of a step.
SyncStep HalfOfPush(SyncStep step, const FileSituation& situation) {
    switch (step) {
        case SyncStep::Fetch:
            return situation.hasRecord ? SyncStep::TellDeletedHere : SyncStep::Nothing;
        case SyncStep::Replace:
            return SyncStep::TellNewerThere;
        case SyncStep::FetchBeside:
        case SyncStep::StillBeside:
            return SyncStep::TellConflict;
        case SyncStep::DeleteHere:
            return situation.there == RemoteState::Folder ? SyncStep::Blocked : SyncStep::TellGone;
        case SyncStep::SendNew:
            return situation.hasRecord ? SyncStep::TellChangedAndGone : step;
        default:
            return step;
    }
}

}  // namespace

SyncStep Decide(Direction direction, const FileSituation& situation) {
    const SyncStep step = DecideBoth(situation);
    switch (direction) {
        case Direction::Pull:
            return HalfOfPull(step, situation);
        case Direction::Push:
            return HalfOfPush(step, situation);
        case Direction::Both:
            break;
    }
    return step;
}

}  // namespace plan
}  // namespace ovsync
