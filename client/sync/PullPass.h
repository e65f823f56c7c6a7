#pragma once

#include <QSet>

#include "client/sync/GoneCheck.h"
#include "client/sync/PassContext.h"
#include "client/sync/PullPlan.h"

namespace ovsync {
namespace syncing {

/// Brings a synced folder in step with the service's folder. docs/sync.md tells what it does with every file.
/// For one run. Not thread-safe.
class PullPass {
public:
    /// `context` outlives this object.
    explicit PullPass(PassContext& context) : _context(context) {}

    /// Throws what the library throws when it cannot list the folder, WrongFolder, LocalError when the disk fails,
    /// StoreError, HttpException when the service wants other credentials, and the last error when transfers fail again
    /// and again. What was finished before is recorded.
    [[nodiscard]] SyncOutcome Run();

private:
    void _Pull();
    /// The service's tree; none when nothing is to be done.
    std::optional<RemoteTree> _List(const LocalSnapshot& snapshot);
    /// Tells when it may not.
    bool _MayDelete(int deletions, const RemoteTree& remote);
    /// What of it the service says is not there when it is asked by name.
    PullPlan::Gone _Confirmed(PullPlan::Gone gone, GoneCheck& check);
    bool _IsAllHere(const LocalSnapshot& snapshot);
    void _TellOrders(const std::deque<PullOrder>& orders);
    /// Deletes what is gone, or tells that it was kept, and takes what is deleted out of `snapshot`.
    void _Delete(const PullPlan::Gone& gone, LocalSnapshot& snapshot);
    /// Returns the folders in which a file is left that could not be deleted.
    QSet<QString> _DeleteFiles(QVector<store::Placement> files, LocalSnapshot& snapshot);
    void _DeleteFolders(const QStringList& folders, QSet<QString> unfinished, LocalSnapshot& snapshot);
    /// Tells which of the folders would be empty.
    void _TryDeletingFolders(const QStringList& folders, LocalSnapshot& snapshot);
    void _Keep(const PullPlan::Gone& gone, const QString& reason);
    void _WriteLastPass(const QDateTime& time);

    PassContext& _context;
};

}  // namespace syncing
}  // namespace ovsync
