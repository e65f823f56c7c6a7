#include "client/sync/local/LocalEntry.h"

#include <sys/stat.h>

namespace ovsync {
namespace local {

namespace {

qint64 Nanoseconds(const timespec& time) {
    return static_cast<qint64>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

LocalEntry::Kind KindOf(mode_t mode) {
    if (S_ISDIR(mode)) {
        return LocalEntry::Kind::Folder;
    }
    return S_ISREG(mode) ? LocalEntry::Kind::File : LocalEntry::Kind::Other;
}

}  // namespace

LocalEntry EntryOf(const struct stat& status) {
    LocalEntry entry;
    entry.kind = KindOf(status.st_mode);
    entry.mode = status.st_mode & 0777U;
    entry.fingerprint.inode = status.st_ino;
    entry.fingerprint.size = status.st_size;
    entry.fingerprint.modified = Nanoseconds(status.st_mtim);
    entry.fingerprint.changed = Nanoseconds(status.st_ctim);
    return entry;
}

unsigned WithExecutableBit(unsigned mode, bool isExecutable) {
    const unsigned readable = S_IRUSR | S_IRGRP | S_IROTH;
    const unsigned executable = S_IXUSR | S_IXGRP | S_IXOTH;
    return isExecutable ? mode | ((mode & readable) >> 2U) : mode & ~executable;
}

}  // namespace local
}  // namespace ovsync
