#pragma once

#include "client/sync/pass/SyncPass.h"

namespace ovsync {
namespace push {

/// Brings the service's folder in step with a synced folder, but deletes nothing there. docs/sync.md tells what it does
/// with every file. For one run. Not thread-safe.
class PushPass {
public:
    /// `pass` outlives this object.
    explicit PushPass(pass::SyncPass& pass) : _pass(pass) {}

    /// Throws as PullPass::Run does.
    [[nodiscard]] report::SyncOutcome Run();

private:
    /// Returns the paths of what was to be sent.
    QSet<QString> _Push(const local::LocalSnapshot& snapshot, pass::SyncPass::Listing& listing);

    pass::SyncPass& _pass;
};

}  // namespace push
}  // namespace ovsync
