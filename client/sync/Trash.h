#pragma once

#include <QDateTime>
#include <QString>

#include "client/sync/ILocalTree.h"

namespace ovsync {
namespace syncing {

/// What passes replaced or deleted in a synced folder, kept in its hidden folder by the time of the pass and the path
/// of the file. Putting something in is a rename, and takes no space. Throws LocalError. Not thread-safe.
class Trash {
public:
    static constexpr int DefaultDays = 30;

    /// `tree` outlives this object. `now` is when the pass began. With 0 `days` nothing is kept.
    Trash(ILocalTree& tree, const QDateTime& now, int days) : _tree(tree), _now(now.toUTC()), _days(days) {}

    /// Takes in the file at `file`, which was at `path`.
    void Take(const QString& file, const QString& path);

private:
    /// False, and nothing done, when something is there already.
    bool _TakeInto(const QString& folder, const QString& file, const QString& path);
    /// False when something else than a folder is in the way.
    bool _MakeFolders(const QString& path);

    ILocalTree& _tree;
    const QDateTime _now;
    const int _days;
};

}  // namespace syncing
}  // namespace ovsync
