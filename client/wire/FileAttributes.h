#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

namespace ovsync {
namespace wire {

/// What the listing of a file says that the library has no place for, sizes apart. A plain value.
struct FileAttributes {
    /// None when the listing did not say.
    std::optional<bool> isExecutable;
    /// The date that a client has left with the file, in UTC; invalid when none did.
    QDateTime keptDate;
    /// Of the content that has that date, in hexadecimal: other clients replace the content and leave the date.
    QString md5OfKeptDate;

    bool IsEmpty() const { return !isExecutable && !keptDate.isValid(); }

    /// When the content with that MD5 was last changed, if the server itself says `listed`.
    QDateTime DateOf(const QString& md5, const QDateTime& listed) const {
        return keptDate.isValid() && md5 == md5OfKeptDate ? keptDate : listed;
    }
};

}  // namespace wire
}  // namespace ovsync
