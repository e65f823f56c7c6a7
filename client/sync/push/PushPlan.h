#pragma once

#include <QHash>
#include <QMultiHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <deque>
#include <optional>

#include "client/store/ConflictCopy.h"
#include "client/store/RecordChanges.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/push/PushOrder.h"

namespace ovsync {
namespace push {

/// What a push has to do, found out file by file as PushDecision says. Does none of it, and tells of nothing but what
/// could not be compared. Not thread-safe.
class PushPlan {
public:
    struct Work {
        /// To be made on the service. A folder comes before those in it.
        QStringList folders;
        std::deque<PushOrder> orders;
        store::RecordChanges records;
        QVector<report::SyncEvent> events;
    };

    /// The arguments outlive this object.
    PushPlan(const pass::PassSides& sides, const pass::FileComparison& comparison, const pass::RecordMaker& maker,
             const pass::RemoteTree& remote, const local::LocalSnapshot& snapshot, pass::PassReport& report);

    /// To be called once.
    Work Find();

private:
    void _Decide(const QString& path);
    void _Order(const QString& path, const local::LocalEntry& here, const QString& knownMd5);
    /// When the second in which `remote` was changed is over, if its date alone tells it and it was the listing's.
    std::chrono::steady_clock::time_point _EndOfSecondOf(const sync::config::FileConfiguration& remote) const;
    QString _ConflictText(const QString& path, const sync::config::FileConfiguration& remote) const;
    /// Compares with the content itself where the service has no checksums.
    bool _HasFetchedContentOf(const QString& path, const sync::config::FileConfiguration& remote,
                              pass::LocalFileState& here);
    /// Whether the service's content is that of which `md5` is.
    bool _IsContentThere(const QString& path, const sync::config::FileConfiguration& remote, const QString& md5);
    /// The copy of the service's version whose end was that of the conflict.
    std::optional<store::ConflictCopy> _FindResolved(const QString& path,
                                                     const sync::config::FileConfiguration& remote);
    void _FindDeletedFolders();
    void _FindFolders();
    /// The folders above `path` have to be there.
    void _NeedFoldersOf(const QString& path);
    void _Tell(report::SyncEvent::Kind kind, const QString& path, const QString& detail = QString());

    const pass::PassSides& _sides;
    const pass::FileComparison& _comparison;
    const pass::RecordMaker& _maker;
    const pass::RemoteTree& _remote;
    const local::LocalSnapshot& _snapshot;
    pass::PassReport& _report;
    QHash<QString, QString> _copies;
    QMultiHash<QString, store::ConflictCopy> _copiesOf;
    QSet<QString> _knownFolders;
    /// Those in which something new lies.
    QSet<QString> _neededFolders;
    QSet<QString> _blockedFolders;
    Work _work;
};

}  // namespace push
}  // namespace ovsync
