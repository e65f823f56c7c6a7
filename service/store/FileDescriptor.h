#pragma once

namespace service::store {

/// Owns an open file descriptor and closes it. Movable, not copyable.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) noexcept : _descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor();

    /// The descriptor, or a negative number when nothing is open. Stays owned by this object.
    int Get() const noexcept { return _descriptor; }
    bool IsOpen() const noexcept { return _descriptor >= 0; }

    /// Leaves the descriptor open, for somebody else to close.
    void Release() noexcept { _descriptor = -1; }

private:
    int _descriptor;
};

}  // namespace service::store
