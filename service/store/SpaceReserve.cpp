#include "service/store/SpaceReserve.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "service/store/FileDescriptor.h"

namespace service::store {

void SpaceReserve::Fill() {
    // What some hundred changes of the metadata take.
    constexpr off_t size = 1048576;
    const FileDescriptor file(open(_file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (file.IsOpen() && posix_fallocate(file.Get(), 0, size) != 0) {
        unlink(_file.c_str());
    }
}

bool SpaceReserve::Release() {
    struct stat status {};
    return stat(_file.c_str(), &status) == 0 && status.st_size > 0 && unlink(_file.c_str()) == 0;
}

}  // namespace service::store
