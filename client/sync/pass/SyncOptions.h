#pragma once

#include <atomic>

#include "client/sync/local/Exclusion.h"
#include "client/sync/local/Trash.h"
#include "client/sync/pass/DeletionLimit.h"

namespace ovsync {
namespace pass {

/// How a pass works. A plain value.
struct SyncOptions {
    /// What becomes of a file that both sides changed.
    enum class Conflicts {
        /// The service's version is put beside it.
        KeepBoth,
        Newer,
        Here,
        There
    };

    /// Whether a pull deletes what the service has deleted, and a push there what was deleted here.
    bool deletes = false;
    /// Of a pass in both directions.
    Conflicts conflicts = Conflicts::KeepBoth;
    /// For how many days what a pass replaces or deletes here is kept; 0 for not at all.
    int daysKept = local::Trash::DefaultDays;
    /// Whether everything is only said, and nothing done.
    bool isDryRun = false;
    /// Whether a push replaces a file of which the server tells nothing by which another change could be noticed.
    bool isForced = false;
    /// Whether what no pass ever syncs counts as left to somebody.
    bool isStrict = false;
    /// The most files that a pass deletes on either side.
    DeletionLimit deletionLimit;
    /// How many files may be transferred at once.
    int transfers = 4;
    /// What is left alone on both sides.
    local::Exclusion exclusion;
    /// Becomes true when the pass is to end early. Must not be null; outlives the pass.
    const std::atomic<bool>* isStopped = nullptr;
};

}  // namespace pass
}  // namespace ovsync
