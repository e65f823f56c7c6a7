#pragma once

#include "client/sync/pass/FileState.h"

/// What a pull does with one file. docs/sync.md has the same as tables. Thread-safe.

namespace ovsync {
namespace pull {

/// A plain value. A file here that is Unchanged or Changed has a record.
struct PullSituation {
    pass::LocalState here = pass::LocalState::Nothing;
    pass::RemoteState there = pass::RemoteState::Nothing;
    bool hasRecord = false;
    /// Whether the file here has the content of the service's New or Older file.
    bool isSameContent = false;
    /// Whether the service's New or Older version was put beside the file here by an earlier pass.
    bool isBesideAlready = false;
};

enum class PullStep {
    Nothing,
    Fetch,
    /// Fetch, and replace the file here.
    Replace,
    /// Fetch, and put it beside the file here.
    FetchBeside,
    /// Tell that the two versions are still to be joined.
    StillBeside,
    /// Only write the record.
    Record,
    ForgetRecord,
    /// Delete the file here, or tell that it was kept where nothing is to be deleted.
    Delete,
    /// Tell that the service deleted what was changed here.
    KeepChanged,
    /// Tell that what is here cannot give way.
    Blocked
};

PullStep DecidePull(const PullSituation& situation);

}  // namespace pull
}  // namespace ovsync
