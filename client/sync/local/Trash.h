#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>
#include <functional>
#include <optional>

#include "client/sync/local/ILocalTree.h"
#include "client/sync/local/TrashTime.h"
#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace local {

/// A file in the trash. A plain value.
struct TrashEntry {
    TrashTime from;
    /// Where it was, below the synced folder.
    QString path;
    qint64 size = 0;
};

/// What passes replaced or deleted in a synced folder, kept in its hidden folder by the time of the pass and the path
/// of the file. Putting something in and taking it out are renames, and take no space. What no pass put there is left
/// alone. Throws LocalError. Not thread-safe.
class Trash {
public:
    static constexpr int DefaultDays = 30;

    /// `tree` outlives this object. `now` is when the pass began. With 0 `days` nothing is kept.
    Trash(ILocalTree& tree, const QDateTime& now, int days) : _tree(tree), _now(now.toUTC()), _days(days) {}

    /// Takes in the file at `file`, which was at `path`.
    void Take(const QString& file, const QString& path);

    /// In order of time and path.
    QVector<TrashEntry> Entries();
    /// The file that was at `path`: that of the folder `from`, or without one the newest.
    std::optional<TrashEntry> Find(const QString& path, const std::optional<TrashTime>& from);
    /// Brings the file to `path`, with the folders above it. Empty when it is there; else nothing was brought, and this
    /// is the path, that one or one above it, where something else is in the way.
    [[nodiscard]] QString Restore(const TrashEntry& entry, const QString& path);

    /// Removes what was taken in more than the days to keep ago. What could not be removed is told of.
    [[nodiscard]] QVector<report::SyncEvent> RemoveOld();
    [[nodiscard]] QVector<report::SyncEvent> RemoveAll();

private:
    [[nodiscard]] bool _TakeInto(const QString& folder, const QString& file, const QString& path);
    /// Makes the folder and those above it. Empty, or the path where something else is in the way.
    [[nodiscard]] QString _MakeFolders(const QString& path);
    /// The folders of the passes, in their order.
    QVector<TrashTime> _Passes();
    void _AddEntries(const TrashTime& pass, QVector<TrashEntry>& entries);
    /// Whoever only reads the trash can be overtaken by one who empties it.
    QVector<NamedLocalEntry> _ListUnlessGone(const QString& folder);
    QVector<report::SyncEvent> _Remove(const std::function<bool(const TrashTime& pass)>& goes);
    /// Empty, or why not all could be removed.
    QString _RemoveWithContent(const QString& folder);

    ILocalTree& _tree;
    const QDateTime _now;
    const int _days;
};

}  // namespace local
}  // namespace ovsync
