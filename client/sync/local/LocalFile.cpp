#include "client/sync/local/LocalFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "client/sync/local/LocalEntry.h"
#include "client/sync/local/LocalError.h"

namespace ovsync {
namespace local {

LocalFile::LocalFile(int descriptor, const QString& path, bool isSyncedWithAll)
    : _descriptor(descriptor), _path(path), _isSyncedWithAll(isSyncedWithAll) {}

LocalFile::~LocalFile() {
    close(_descriptor);
}

size_t LocalFile::Read(char* bytes, size_t size) {
    ssize_t count = 0;
    do {
        count = read(_descriptor, bytes, size);
    } while (count < 0 && errno == EINTR);
    _Check(count >= 0);
    return static_cast<size_t>(count);
}

void LocalFile::Rewind() {
    _Check(lseek(_descriptor, 0, SEEK_SET) == 0);
}

void LocalFile::Write(const char* bytes, size_t size) {
    while (size != 0) {
        const ssize_t count = write(_descriptor, bytes, size);
        _Check(count >= 0 || errno == EINTR);
        if (count > 0) {
            bytes += count;
            size -= static_cast<size_t>(count);
        }
    }
}

void LocalFile::Truncate(qint64 size) {
    _Check(ftruncate(_descriptor, size) == 0 && lseek(_descriptor, size, SEEK_SET) == size);
}

void LocalFile::SetModified(const QDateTime& time) {
    if (!time.isValid()) {
        return;
    }
    const qint64 milliseconds = time.toMSecsSinceEpoch();
    // Before 1970 the seconds round down, too.
    const qint64 seconds = (milliseconds - (milliseconds < 0 ? 999 : 0)) / 1000;
    timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(seconds);
    times[1].tv_nsec = static_cast<long>((milliseconds - seconds * 1000) * 1000000);
    _Check(futimens(_descriptor, times) == 0);
}

void LocalFile::SetMode(unsigned mode) {
    _Check(fchmod(_descriptor, mode) == 0);
}

void LocalFile::Sync() {
    _Check(fsync(_descriptor) == 0);
}

store::Fingerprint LocalFile::Look() {
    struct stat status {};
    _Check(fstat(_descriptor, &status) == 0);
    return EntryOf(status).fingerprint;
}

void LocalFile::_Check(bool isDone) const {
    if (!isDone) {
        throw LocalError(_path, errno);
    }
}

}  // namespace local
}  // namespace ovsync
