#pragma once

#include "client/sync/PassContext.h"

namespace ovsync {
namespace syncing {

/// Brings the service's folder in step with a synced folder, but deletes nothing there. docs/sync.md tells what it does
/// with every file. For one run. Not thread-safe.
class PushPass {
public:
    /// `context` outlives this object.
    explicit PushPass(PassContext& context) : _context(context) {}

    /// Throws as PullPass::Run does.
    [[nodiscard]] SyncOutcome Run();

private:
    void _Push();

    PassContext& _context;
};

}  // namespace syncing
}  // namespace ovsync
