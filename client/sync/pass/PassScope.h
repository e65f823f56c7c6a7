#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include "client/store/FolderRecord.h"
#include "client/store/RecordDatabase.h"

namespace ovsync {
namespace pass {

/// The places that a pass looks at: all, or some and all folders above them. Whatever else has a record is in step. Not
/// thread-safe.
class PassScope {
public:
    /// Everything, until Narrow.
    explicit PassScope(store::RecordDatabase& records) : _records(records) {}

    bool IsWhole() const { return _isWhole; }
    const QSet<QString>& Paths() const { return _paths; }

    /// From now on these and the folders above them.
    void Narrow(const QSet<QString>& paths);
    /// What was at `from`, with everything in it, is at `to` now.
    void Move(const QString& from, const QString& to);

    /// The paths of those files that have a record. In no order.
    QStringList Files() const;
    /// The same for folders; one comes before those in it.
    QStringList Folders() const;
    QList<store::FolderRecord> FolderRecords() const;

    /// Whether files with a record are left out, which are in step.
    bool LeavesFilesOut() const { return !_isWhole && Files().size() < _records.FileCount(); }

private:
    store::RecordDatabase& _records;
    bool _isWhole = true;
    QSet<QString> _paths;
};

}  // namespace pass
}  // namespace ovsync
