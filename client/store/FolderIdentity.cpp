#include "client/store/FolderIdentity.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace ovsync {
namespace store {

QString FolderIdentity(int descriptor) {
    struct stat status {};
    struct statvfs disk {};
    if (fstat(descriptor, &status) != 0 || fstatvfs(descriptor, &disk) != 0) {
        return QString();
    }
    // The number of a device may be another one after a restart.
    return QStringLiteral("%1:%2").arg(disk.f_fsid).arg(status.st_ino);
}

}  // namespace store
}  // namespace ovsync
