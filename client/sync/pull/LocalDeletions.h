#pragma once

#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/pull/GoneCheck.h"
#include "client/sync/pull/LocalChanges.h"
#include "client/sync/pull/PullPlan.h"

namespace ovsync {
namespace pull {

/// Deletes here what the service has deleted, unless that is too much, or the service has it after all. For one pass.
/// Not thread-safe.
class LocalDeletions {
public:
    /// The arguments outlive this object.
    LocalDeletions(const pass::PassSides& sides, const pass::RemoteTree& remote, LocalChanges& changes,
                   pass::PassReport& report)
        : _sides(sides), _remote(remote), _changes(changes), _report(report), _check(sides.service, remote) {}

    /// Whether so many files may be deleted. Tells when they may not.
    [[nodiscard]] bool MayDelete(int deletions);
    /// Deletes what the service says is not there when it is asked by name. Throws Cancelled.
    void Delete(PullPlan::Gone gone);
    /// Leaves all of it to the next pass, without a word.
    void Postpone(const PullPlan::Gone& gone);
    /// Tells that all of it is kept.
    void Keep(const PullPlan::Gone& gone, const QString& reason);

private:
    /// Tells when it is.
    bool _IsThere(const QString& path);

    const pass::PassSides& _sides;
    const pass::RemoteTree& _remote;
    LocalChanges& _changes;
    pass::PassReport& _report;
    GoneCheck _check;
};

}  // namespace pull
}  // namespace ovsync
