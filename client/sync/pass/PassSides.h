#pragma once

#include "client/store/RecordDatabase.h"
#include "client/sync/local/Exclusion.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/pass/PassScope.h"
#include "client/sync/pass/ServiceFolder.h"
#include "client/sync/pass/SyncOptions.h"

namespace ovsync {
namespace pass {

/// Both sides of a pass, the records of what they had in common, what of all that it looks at, and how it works. In a
/// dry run nothing that is done to `tree` and `records` lasts. Owns none of them.
struct PassSides {
    const ServiceFolder& service;
    local::ILocalTree& tree;
    store::RecordDatabase& records;
    const SyncOptions& options;
    const local::Exclusion exclusion;
    const PassScope& scope;
};

}  // namespace pass
}  // namespace ovsync
