#pragma once

#include <QDateTime>

namespace ovsync {
namespace store {

/// What a file system says of a file, by which one can tell without reading it that nobody wrote it. A plain value.
struct Fingerprint {
    quint64 inode = 0;
    /// In bytes.
    qint64 size = -1;
    /// In nanoseconds since 1970.
    qint64 modified = 0;
    /// The time of the last change of anything about the file, in nanoseconds since 1970. 0: the times cannot tell
    /// whether the file was written, since that could have happened within one tick of the clock.
    qint64 changed = 0;

    QDateTime ModifiedDate() const { return QDateTime::fromMSecsSinceEpoch(modified / 1000000, Qt::UTC); }

    /// Whether nobody wrote the file since `earlier` was taken.
    bool IsUnchangedSince(const Fingerprint& earlier) const {
        return size == earlier.size && modified == earlier.modified && changed == earlier.changed && changed != 0;
    }

    /// The same for a file that may have been renamed since, which sets the time of its last change.
    bool IsSameFileAs(const Fingerprint& earlier) const {
        return inode == earlier.inode && size == earlier.size && modified == earlier.modified;
    }
};

}  // namespace store
}  // namespace ovsync
