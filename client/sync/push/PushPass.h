#pragma once

#include "client/sync/pass/PassContext.h"

namespace ovsync {
namespace push {

/// Brings the service's folder in step with a synced folder, but deletes nothing there. docs/sync.md tells what it does
/// with every file. For one run. Not thread-safe.
class PushPass {
public:
    /// `context` outlives this object.
    explicit PushPass(pass::PassContext& context) : _context(context) {}

    /// Throws as PullPass::Run does.
    [[nodiscard]] report::SyncOutcome Run();

private:
    void _Push();

    pass::PassContext& _context;
};

}  // namespace push
}  // namespace ovsync
