#pragma once

#include "client/sync/pass/SyncPass.h"

namespace ovsync {
namespace pull {

/// Brings a synced folder in step with the service's folder. docs/sync.md tells what it does with every file.
/// For one run. Not thread-safe.
class PullPass {
public:
    /// `pass` outlives this object.
    explicit PullPass(pass::SyncPass& pass) : _pass(pass), _sides(pass.Sides()), _report(pass.Report()) {}

    /// Throws what the library throws when it cannot list the folder, WrongFolder, LocalError when the disk fails,
    /// StoreError, HttpException when the service wants other credentials, and the last error when transfers fail again
    /// and again. What was finished before is recorded.
    [[nodiscard]] report::SyncOutcome Run();

private:
    void _Pull(local::LocalSnapshot& snapshot, const pass::SyncPass::Listing& listing);

    pass::SyncPass& _pass;
    const pass::PassSides& _sides;
    pass::PassReport& _report;
};

}  // namespace pull
}  // namespace ovsync
