#pragma once

#include <QSet>

#include "client/sync/pass/PassContext.h"
#include "client/sync/pull/GoneCheck.h"
#include "client/sync/pull/PullPlan.h"

namespace ovsync {
namespace pull {

/// Brings a synced folder in step with the service's folder. docs/sync.md tells what it does with every file.
/// For one run. Not thread-safe.
class PullPass {
public:
    /// `context` outlives this object.
    explicit PullPass(pass::PassContext& context) : _context(context) {}

    /// Throws what the library throws when it cannot list the folder, WrongFolder, LocalError when the disk fails,
    /// StoreError, HttpException when the service wants other credentials, and the last error when transfers fail again
    /// and again. What was finished before is recorded.
    [[nodiscard]] report::SyncOutcome Run();

private:
    void _Pull();
    /// The service's tree; none when nothing is to be done.
    std::optional<pass::RemoteTree> _List(const local::LocalSnapshot& snapshot);
    /// Tells when it may not.
    bool _MayDelete(int deletions, const pass::RemoteTree& remote);
    /// What of it the service says is not there when it is asked by name.
    PullPlan::Gone _Confirmed(PullPlan::Gone gone, GoneCheck& check);
    bool _IsAllHere(const local::LocalSnapshot& snapshot);
    void _TellOrders(const std::deque<PullOrder>& orders);
    /// Deletes what is gone, or tells that it was kept, and takes what is deleted out of `snapshot`.
    void _Delete(const PullPlan::Gone& gone, local::LocalSnapshot& snapshot);
    /// Returns the folders in which a file is left that could not be deleted.
    QSet<QString> _DeleteFiles(QVector<store::Placement> files, local::LocalSnapshot& snapshot);
    void _DeleteFolders(const QStringList& folders, QSet<QString> unfinished, local::LocalSnapshot& snapshot);
    /// Tells which of the folders would be empty.
    void _TryDeletingFolders(const QStringList& folders, local::LocalSnapshot& snapshot);
    void _Keep(const PullPlan::Gone& gone, const QString& reason);
    void _WriteLastPass(const QDateTime& time);

    pass::PassContext& _context;
};

}  // namespace pull
}  // namespace ovsync
