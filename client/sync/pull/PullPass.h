#pragma once

#include "client/sync/pass/SyncPass.h"
#include "client/sync/pull/GoneCheck.h"
#include "client/sync/pull/PullPlan.h"

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
    void _Pull();
    /// Without a tree when nothing is to be done.
    pass::SyncPass::Listing _List(const local::LocalSnapshot& snapshot);
    bool _IsAllHere(const local::LocalSnapshot& snapshot);
    /// Tells when it may not.
    bool _MayDelete(int deletions, const pass::RemoteTree& remote);
    /// What of it the service says is not there when it is asked by name.
    PullPlan::Gone _Confirmed(PullPlan::Gone gone, GoneCheck& check);
    void _Keep(const PullPlan::Gone& gone, const QString& reason);
    void _WriteLastPass(const QDateTime& time);

    pass::SyncPass& _pass;
    const pass::PassSides& _sides;
    pass::PassReport& _report;
};

}  // namespace pull
}  // namespace ovsync
