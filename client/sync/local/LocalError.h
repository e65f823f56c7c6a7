#pragma once

#include <QString>

#include "host/core/SyncException.h"

namespace ovsync {
namespace local {

/// Something in the synced folder cannot be read or changed. The message names the file and says why. A value.
class LocalError : public sync::core::SyncException {
public:
    /// `code` is that of errno.
    LocalError(const QString& path, int code);

    int Code() const { return _code; }
    const QString& Path() const { return _path; }

    /// Whether no other file will do better: the disk is full, broken or not to be written.
    bool ConcernsWholeDisk() const;

private:
    QString _path;
    int _code;
};

}  // namespace local
}  // namespace ovsync
