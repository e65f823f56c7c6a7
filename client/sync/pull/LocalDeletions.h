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

    /// Whether so many files may be deleted.
    [[nodiscard]] bool MayDelete(int deletions);
    /// Tells of it when they may not; with the command that does it all the same, unless something else is in the way.
    void TellOfLimit(bool isAllTransferred);
    /// Deletes what the service says is not there when it is asked by name. Throws Cancelled.
    void Delete(PullPlan::Gone gone);
    /// Leaves all of it to the next pass, without a word.
    void Postpone(const PullPlan::Gone& gone);
    /// Tells that all of it is kept, because nothing is to be deleted.
    void Keep(const PullPlan::Gone& gone);
    /// Tells that all of it goes once everything else was transferred.
    void PutOff(const PullPlan::Gone& gone);

private:
    void _Tell(report::SyncEvent::Kind kind, const PullPlan::Gone& gone, const QString& detail);
    /// Tells when it is.
    bool _IsThere(const QString& path);

    const pass::PassSides& _sides;
    const pass::RemoteTree& _remote;
    LocalChanges& _changes;
    pass::PassReport& _report;
    GoneCheck _check;
    /// Why nothing may be deleted; empty unless that is so.
    QString _limit;
    /// What is then not deleted.
    int _refusedDeletions = 0;
};

}  // namespace pull
}  // namespace ovsync
