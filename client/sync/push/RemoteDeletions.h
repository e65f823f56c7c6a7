#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <deque>

#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/RecordMaker.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/push/PushPlan.h"

namespace ovsync {
namespace push {

/// Deletes on the service what was deleted here, unless that is too much, or something changed meanwhile: tells of it,
/// records it, and brings the listing up to date. For one pass. Not thread-safe.
class RemoteDeletions {
public:
    /// The arguments outlive this object.
    RemoteDeletions(const pass::PassSides& sides, const pass::FileComparison& comparison,
                    const pass::RecordMaker& maker, const local::LocalSnapshot& snapshot, pass::RemoteTree& remote,
                    pass::PassReport& report)
        : _sides(sides),
          _comparison(comparison),
          _maker(maker),
          _snapshot(snapshot),
          _remote(remote),
          _report(report) {}

    /// Whether so many files may be deleted.
    [[nodiscard]] bool MayDelete(int deletions);
    /// Tells of it when they may not; with the command that does it all the same, unless something else is in the way.
    void TellOfLimit(bool isAllTransferred);
    /// Deletes what passes left behind that were killed while they deleted a folder.
    void ClearUp();
    /// Throws Cancelled, and what PassReport::TellFailure throws.
    void Delete(const PushPlan::Gone& gone);
    /// Tells that all of it goes once everything else was transferred.
    void PutOff(const PushPlan::Gone& gone);

private:
    bool _IsAnyHere() const;
    void _DeleteFiles(const std::deque<PushOrder>& files);
    void _DeleteFolder(const QString& path);
    /// False when something is in it.
    bool _IsDeletedThere(const QString& path);
    /// The same of a trial, in which everything is still there. It does not see what no listing has beside what goes.
    bool _WouldBeEmpty(const QString& path) const;
    void _Forget(const QString& path);
    /// Tries twice.
    void _DeleteEmpty(const QString& path) const;
    /// Returns its path now.
    QString _MovedAside(const QString& path) const;
    bool _IsEmpty(const QString& path) const { return _sides.service.isEmpty(_sides.service.ServerPath(path)); }

    const pass::PassSides& _sides;
    const pass::FileComparison& _comparison;
    const pass::RecordMaker& _maker;
    const local::LocalSnapshot& _snapshot;
    pass::RemoteTree& _remote;
    pass::PassReport& _report;
    /// Why nothing may be deleted; empty unless that is so.
    QString _limit;
    /// What is then not deleted.
    int _refusedDeletions = 0;
    /// What was deleted, or would have been.
    QSet<QString> _forgotten;
};

}  // namespace push
}  // namespace ovsync
