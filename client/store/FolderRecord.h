#pragma once

#include <QString>

namespace ovsync {
namespace store {

/// What is remembered of a folder that was here and on the service. A plain value.
struct FolderRecord {
    /// Below the synced folder, its segments joined with '/'.
    QString path;
    /// By which the file system knows it here; 0 when nobody has looked yet.
    quint64 inode = 0;
    /// By which the service knows it; empty when nobody has asked yet, and where there are no ids.
    QString itemId;
};

}  // namespace store
}  // namespace ovsync
