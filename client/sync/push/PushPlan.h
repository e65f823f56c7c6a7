#pragma once

#include <QMultiHash>
#include <QSet>
#include <QString>
#include <deque>

#include "client/store/ConflictCopy.h"
#include "client/sync/pass/PassContext.h"
#include "client/sync/push/PushOrder.h"

namespace ovsync {
namespace push {

/// What a push has to do, found out file by file as PushDecision says. What needs no transfer is done on the way:
/// missing folders are made on the service, records written and forgotten, conflicts told of. Not thread-safe.
class PushPlan {
public:
    /// The arguments outlive this object.
    PushPlan(pass::PassContext& context, const pass::RemoteTree& remote, const local::LocalSnapshot& snapshot);

    std::deque<PushOrder> FindOrders();

private:
    void _Decide(const QString& path);
    void _Order(const QString& path, const local::LocalEntry& here, const QString& knownMd5);
    QString _ConflictText(const QString& path, const sync::config::FileConfiguration& remote) const;
    /// Compares with the content itself where the service has no checksums.
    bool _HasFetchedContentOf(const QString& path, const sync::config::FileConfiguration& remote,
                              pass::LocalFileState& here);
    /// Whether the service's content is that of which `md5` is.
    bool _IsContentThere(const QString& path, const sync::config::FileConfiguration& remote, const QString& md5);
    /// The copy of the service's version whose end was that of the conflict.
    std::optional<store::ConflictCopy> _FindResolved(const QString& path,
                                                     const sync::config::FileConfiguration& remote);
    void _TellDeletedFolders();
    void _MakeFolders();
    /// False when it cannot be made.
    bool _MakeFolder(const QString& path);
    /// The folders above `path` have to be there.
    void _NeedFoldersOf(const QString& path);

    pass::PassContext& _context;
    const pass::RemoteTree& _remote;
    const local::LocalSnapshot& _snapshot;
    QHash<QString, QString> _copies;
    QMultiHash<QString, store::ConflictCopy> _copiesOf;
    QSet<QString> _knownFolders;
    /// Those in which something new lies.
    QSet<QString> _neededFolders;
    QSet<QString> _blockedFolders;
    std::deque<PushOrder> _orders;
};

}  // namespace push
}  // namespace ovsync
