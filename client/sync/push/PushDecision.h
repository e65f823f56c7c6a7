#pragma once

#include "client/sync/pass/FileState.h"

/// What a push does with one file. docs/sync.md has the same as a table. Thread-safe.

namespace ovsync {
namespace push {

/// A plain value. A file here that is Unchanged or Changed has a record.
struct PushSituation {
    pass::LocalState here = pass::LocalState::Nothing;
    pass::RemoteState there = pass::RemoteState::Nothing;
    bool hasRecord = false;
    /// Whether the file here has the content of the service's New or Older file.
    bool isSameContent = false;
    /// Whether a pull put the service's New or Older version beside the file here, and somebody has removed that since.
    bool isResolved = false;
};

enum class PushStep {
    Nothing,
    SendNew,
    /// Send over the version that the service has.
    SendChanged,
    /// Only write the record.
    Record,
    ForgetRecord,
    /// Tell that the service still has what was deleted here.
    TellDeletedHere,
    /// Tell that a pull is due.
    TellNewerThere,
    /// Tell that the service deleted it. It is not sent again.
    TellGone,
    /// Tell that both sides changed it.
    Conflict,
    /// Tell that the service deleted what was changed here.
    ConflictWithDeletion,
    /// Tell that a folder has the name on one side only.
    Blocked
};

PushStep DecidePush(const PushSituation& situation);

}  // namespace push
}  // namespace ovsync
