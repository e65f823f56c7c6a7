#pragma once

#include "service/protocol/IBody.h"
#include "service/store/FileDescriptor.h"

namespace service::dav {

/// A part of a file. Reading throws std::runtime_error when the file has become shorter meanwhile.
class FileBody : public protocol::IBody {
public:
    /// `first` and `size` in bytes.
    FileBody(store::FileDescriptor file, std::uint64_t first, std::uint64_t size);

    std::optional<std::uint64_t> Size() const override { return _size; }
    std::size_t Read(char* buffer, std::size_t size) override;

private:
    store::FileDescriptor _file;
    std::uint64_t _first;
    std::uint64_t _size;
    std::uint64_t _position = 0;
};

}  // namespace service::dav
