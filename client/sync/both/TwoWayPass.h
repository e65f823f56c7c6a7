#pragma once

#include "client/sync/pass/SyncPass.h"

namespace ovsync {
namespace both {

/// Brings a synced folder and the service's folder in step with each other. docs/sync.md tells what it does with every
/// file. For one run. Not thread-safe.
class TwoWayPass {
public:
    /// `pass` outlives this object.
    explicit TwoWayPass(pass::SyncPass& pass) : _pass(pass), _sides(pass.Sides()), _report(pass.Report()) {}

    /// Throws as PullPass::Run does.
    [[nodiscard]] report::SyncOutcome Run();

private:
    void _Sync();
    /// Whether what is here is what the records say, and nothing else.
    bool _IsUnchanged(const local::LocalSnapshot& snapshot);

    pass::SyncPass& _pass;
    const pass::PassSides& _sides;
    pass::PassReport& _report;
};

}  // namespace both
}  // namespace ovsync
