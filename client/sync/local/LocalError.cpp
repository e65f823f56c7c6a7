#include "client/sync/local/LocalError.h"

#include <cerrno>
#include <cstring>

namespace ovsync {
namespace local {

LocalError::LocalError(const QString& path, int code)
    : SyncException(QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(code)))),
      _path(path),
      _code(code) {}

bool LocalError::ConcernsWholeDisk() const {
    return _code == ENOSPC || _code == EDQUOT || _code == EROFS || _code == EIO || _code == EMFILE || _code == ENFILE;
}

}  // namespace local
}  // namespace ovsync
