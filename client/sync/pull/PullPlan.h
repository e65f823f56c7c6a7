#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <deque>

#include "client/store/Placement.h"
#include "client/sync/pass/PassContext.h"
#include "client/sync/pull/PullOrder.h"

namespace ovsync {
namespace pull {

/// What a pull has to do, found out file by file as PullDecision says. What needs no transfer and no deletion is done
/// on the way: missing folders are made, records written and forgotten, conflicts told of. Not thread-safe.
class PullPlan {
public:
    /// What is here and not on the service any more.
    struct Gone {
        QVector<store::Placement> files;
        /// A folder comes before those in it.
        QStringList folders;
    };

    /// `context` outlives this object.
    explicit PullPlan(pass::PassContext& context);

    /// What the service has deleted. First for what stands in the way of files and folders of the service, which have
    /// the same name, then for the rest.
    void FindGone(const pass::RemoteTree& remote, const local::LocalSnapshot& snapshot, Gone& inTheWay, Gone& others);

    /// What the service has. `snapshot` gets the folders that are made.
    std::deque<PullOrder> FindOrders(const pass::RemoteTree& remote, local::LocalSnapshot& snapshot);

    /// Forgets the copies of conflicts that are over, and that nobody has here any more.
    void ForgetCopies();

private:
    void _FindGoneFile(const QString& path, const pass::RemoteTree& remote, const local::LocalSnapshot& snapshot,
                       Gone& gone);
    void _MakeFolders(const pass::RemoteTree& remote, local::LocalSnapshot& snapshot);
    bool _MakeFolder(const QString& path, local::LocalSnapshot& snapshot);
    void _Decide(const QString& path, const sync::config::FileConfiguration& remote,
                 const local::LocalSnapshot& snapshot, std::deque<PullOrder>& orders);

    pass::PassContext& _context;
    QSet<QString> _blockedFolders;
    /// The copies by their identities, by the paths of the files that they are versions of.
    QHash<QString, QHash<QString, QString>> _besideAlready;
    QSet<QString> _inConflict;
};

}  // namespace pull
}  // namespace ovsync
