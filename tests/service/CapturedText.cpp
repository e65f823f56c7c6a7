#include "tests/service/CapturedText.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace service::test {

CapturedText::CapturedText() : _descriptor(memfd_create("captured", MFD_CLOEXEC)) {
    // Several programs may write, each at the end.
    if (_descriptor < 0 || fcntl(_descriptor, F_SETFL, O_APPEND) != 0) {
        throw std::runtime_error("No file in memory");
    }
}

CapturedText::~CapturedText() {
    close(_descriptor);
}

std::string CapturedText::Text() const {
    struct stat status {};
    fstat(_descriptor, &status);
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t size = pread(_descriptor, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(size));
    return text;
}

}  // namespace service::test
