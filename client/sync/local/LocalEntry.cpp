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
    entry.isLink = S_ISLNK(status.st_mode);
    entry.fingerprint.inode = status.st_ino;
    entry.fingerprint.size = status.st_size;
    entry.fingerprint.modified = Nanoseconds(status.st_mtim);
    entry.fingerprint.changed = Nanoseconds(status.st_ctim);
    return entry;
}

QString KindText(const LocalEntry& entry) {
    switch (entry.kind) {
        case LocalEntry::Kind::File:
            return QStringLiteral("a file");
        case LocalEntry::Kind::Folder:
            return QStringLiteral("a folder");
        case LocalEntry::Kind::Other:
            break;
    }
    return entry.isLink ? QStringLiteral("a link") : QStringLiteral("a pipe, a socket or a device");
}

QString SkippedText(const LocalEntry& entry) {
    return QStringLiteral("it is %1, which is never synced").arg(KindText(entry));
}

QString BlockedText(const LocalEntry& entry, bool isFolderThere) {
    return QStringLiteral("it is %1 here and %2 on the service; rename or remove one of the two")
        .arg(KindText(entry), isFolderThere ? QStringLiteral("a folder") : QStringLiteral("a file"));
}

unsigned WithExecutableBit(unsigned mode, bool isExecutable) {
    const unsigned readable = S_IRUSR | S_IRGRP | S_IROTH;
    const unsigned executable = S_IXUSR | S_IXGRP | S_IXOTH;
    return isExecutable ? mode | ((mode & readable) >> 2U) : mode & ~executable;
}

}  // namespace local
}  // namespace ovsync
