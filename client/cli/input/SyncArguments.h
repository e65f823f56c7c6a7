#pragma once

#include <QString>

#include "client/cli/output/Complaint.h"
#include "client/sync/local/Exclusion.h"
#include "client/sync/local/Trash.h"
#include "client/sync/pass/DeletionLimit.h"
#include "client/sync/pass/SyncOptions.h"

namespace ovsync {
namespace input {

/// What the command line says about a pass over a synced folder. A plain value.
struct SyncArguments {
    QString directory;
    local::Exclusion excluded;
    bool deletes = false;
    pass::SyncOptions::Conflicts conflicts = pass::SyncOptions::Conflicts::KeepBoth;
    bool isDryRun = false;
    output::ErrorStyle errors;
    bool isQuiet = false;
    int transfers = 4;
    bool isStrict = false;
    bool isForced = false;
    pass::DeletionLimit deletionLimit;
    int daysKept = local::Trash::DefaultDays;
    QString caFile;
    /// Whether it writes to the service.
    bool isPush = false;
};

}  // namespace input
}  // namespace ovsync
