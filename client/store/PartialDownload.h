#pragma once

#include <QString>

namespace ovsync {
namespace store {

/// The beginning of a file's content that a pass has received, and has not put in place. A plain value.
struct PartialDownload {
    /// Of the file, below the synced folder.
    QString path;
    /// The temporary file, below the synced folder.
    QString temporary;
    /// Of the version that it is a part of.
    QString identity;
    /// The strong entity tag of that version, as the server sent it.
    QString entityTag;
    /// How much of it is on the disk for sure, in bytes. The file may be longer.
    qint64 size = 0;
    /// Of that much, in hexadecimal.
    QString md5;

    /// Whether both say the same of the same file.
    bool IsSameAs(const PartialDownload& other) const { return temporary == other.temporary && size == other.size; }
};

}  // namespace store
}  // namespace ovsync
