#include "service/dav/FileBody.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace service::dav {

FileBody::FileBody(store::FileDescriptor file, std::uint64_t first, std::uint64_t size)
    : _file(std::move(file)), _first(first), _size(size) {}

std::size_t FileBody::Read(char* buffer, std::size_t size) {
    const std::uint64_t wanted = std::min<std::uint64_t>(size, _size - _position);
    if (wanted == 0) {
        return 0;
    }
    const ssize_t count = pread(_file.Get(), buffer, wanted, static_cast<off_t>(_first + _position));
    if (count <= 0) {
        throw std::runtime_error("The file became shorter or cannot be read while it is sent");
    }
    _position += static_cast<std::uint64_t>(count);
    return static_cast<std::size_t>(count);
}

}  // namespace service::dav
