#pragma once

#include "client/sync/pass/FileState.h"

/// What a pass does with one file. docs/sync.md has the same as tables. Thread-safe.

namespace ovsync {
namespace plan {

/// A pull and a push do the half of what a pass in both directions does, and tell of the other half.
enum class Direction { Pull, Push, Both };

/// Whose version counts where both sides changed a file.
enum class Winner { Nobody, Here, There };

/// A plain value. A file here that is Unchanged or Changed has a record.
struct FileSituation {
    pass::LocalState here = pass::LocalState::Nothing;
    pass::RemoteState there = pass::RemoteState::Nothing;
    bool hasRecord = false;
    /// Whether the file here has the content of the service's New or Older file.
    bool isSameContent = false;
    /// Whether the service's New or Older version was put beside the file here by an earlier pass.
    bool isBesideAlready = false;
    /// Whether it was, and somebody has removed that since.
    bool isResolved = false;
    /// Only a pass in both directions has one.
    Winner winner = Winner::Nobody;
};

enum class SyncStep {
    Nothing,
    /// Only write the record.
    Record,
    ForgetRecord,
    Fetch,
    /// Fetch, and replace the file here.
    Replace,
    /// Fetch, and put it beside the file here.
    FetchBeside,
    /// Tell that the two versions are still to be joined.
    StillBeside,
    /// Delete the file here, or tell that it was kept where nothing is to be deleted.
    DeleteHere,
    SendNew,
    /// Send over the version that the service has.
    SendChanged,
    /// The same, when that version was fetched into the trash.
    SendOver,
    /// Delete the service's file, or tell that it is still there where nothing is to be deleted.
    DeleteThere,
    /// Tell that one side has something of this name that cannot give way to the other side's.
    Blocked,
    /// The steps from here on only a pull or a push has.
    /// Tell that the service deleted what was changed here.
    KeepChanged,
    /// Tell that the service still has what was deleted here.
    TellDeletedHere,
    /// Tell that a pull is due.
    TellNewerThere,
    /// Tell that the service deleted it. It is not sent again.
    TellGone,
    /// Tell that both sides changed it.
    TellConflict,
    /// Tell that the service deleted what was changed here. It is not sent again.
    TellChangedAndGone
};

SyncStep Decide(Direction direction, const FileSituation& situation);

}  // namespace plan
}  // namespace ovsync
