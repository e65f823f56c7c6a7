#include "service/store/FileDescriptor.h"

#include <unistd.h>

#include <utility>

namespace service::store {

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    std::swap(_descriptor, other._descriptor);
    return *this;
}

FileDescriptor::~FileDescriptor() {
    if (_descriptor >= 0) {
        close(_descriptor);
    }
}

}  // namespace service::store
