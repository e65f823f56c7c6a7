#include "client/agent/AgentLock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/core/SyncException.h"

namespace ovsync {
namespace agent {

namespace {

struct flock WholeFileLock() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

}  // namespace

AgentLock::AgentLock(const QString& folder) : _path(folder + QLatin1String("/agent.lock")) {}

AgentLock::~AgentLock() {
    if (_file >= 0) {
        close(_file);
    }
}

bool AgentLock::Take() {
    if (!_Open(O_RDWR | O_CREAT)) {
        throw sync::core::SyncException(
            QStringLiteral("%1: %2").arg(_path, QString::fromLocal8Bit(std::strerror(errno))));
    }
    struct flock lock = WholeFileLock();
    return fcntl(_file, F_OFD_SETLK, &lock) == 0;
}

bool AgentLock::IsTaken() {
    struct flock lock = WholeFileLock();
    return _Open(O_RDWR) && fcntl(_file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

bool AgentLock::_Open(int flags) {
    if (_file < 0) {
        _file = open(_path.toUtf8().constData(), flags | O_CLOEXEC | O_NOFOLLOW, 0600);
    }
    return _file >= 0;
}

}  // namespace agent
}  // namespace ovsync
