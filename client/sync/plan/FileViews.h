#pragma once

#include <QHash>
#include <QMultiHash>
#include <QString>
#include <QStringList>

#include "client/store/ConflictCopy.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/plan/FileView.h"

namespace ovsync {
namespace plan {

/// Looks at the files of both sides, one by one, and finds out what is to be done with each. Changes nothing, and tells
/// of nothing but what could not be compared. Not thread-safe.
class FileViews {
public:
    /// The arguments outlive this object; `snapshot` and `remote` may change meanwhile.
    FileViews(const pass::PassSides& sides, const pass::FileComparison& comparison, const pass::RemoteTree& remote,
              const local::LocalSnapshot& snapshot, pass::PassReport& report, Direction direction);

    Direction Way() const { return _direction; }

    /// While what it returns lives, each At costs less.
    store::RecordDatabase::Reading KeepReading() const { return store::RecordDatabase::Reading(_sides.records); }

    /// Throws Cancelled.
    FileView At(const QString& path) const;

    /// The paths of what is here and of what has a record, in their order.
    QStringList PathsHere() const;

private:
    /// Whether both have the same content, or where the service's lies beside the file here.
    void _CompareContents(FileView& view) const;
    /// Compares with the content itself where the service has no checksums.
    bool _HasFetchedContentOf(FileView& view) const;
    /// Whether the file here has what was put beside it.
    bool _HasContentOf(FileView& view, const store::ConflictCopy& copy) const;
    /// Whether the service's content is that of which `md5` is.
    bool _IsContentThere(const FileView& view, const QString& md5) const;
    void _FindCopies(FileView& view) const;
    Winner _WinnerOf(const FileView& view) const;
    /// Whether it is a copy of the service's version of another file, as a pass put it there.
    bool _IsUntouchedCopy(FileView& view) const;

    const pass::PassSides& _sides;
    const pass::FileComparison& _comparison;
    const pass::RemoteTree& _remote;
    const local::LocalSnapshot& _snapshot;
    pass::PassReport& _report;
    const Direction _direction;
    /// The MD5s of the copies, by their paths.
    QHash<QString, QString> _copies;
    /// By the paths of the files that they are versions of.
    QMultiHash<QString, store::ConflictCopy> _copiesOf;
};

}  // namespace plan
}  // namespace ovsync
