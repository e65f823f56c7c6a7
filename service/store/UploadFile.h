#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "service/store/FileDescriptor.h"
#include "service/store/Interruption.h"
#include "service/store/Md5.h"

namespace service::store {

/// A new file that is being written. Removed with this object, unless it has been renamed or is to be kept.
/// Throws std::system_error when the disk fails or is full. Used by one thread at a time.
class UploadFile {
public:
    /// Makes the file `name` in `folder` (a descriptor that this object duplicates). `path` is the same file relative
    /// to the served folder.
    UploadFile(int folder, const std::string& name, std::string path);
    ~UploadFile();
    UploadFile(const UploadFile&) = delete;
    UploadFile& operator=(const UploadFile&) = delete;

    void Write(std::string_view data);

    /// Writes everything that can still be read from the descriptor `source`. Throws Interrupted.
    void Fill(int source, const Interruption& isInterrupted = {});

    /// The file stays when this object goes.
    void Keep() { _keep = true; }

    /// Gives it a time (nanoseconds since 1970) in place of that of the last Write(), which has to be over.
    void SetModified(std::int64_t nanoseconds);

    /// Has it executable for all who may read it, or for nobody, which is how it begins.
    void SetExecutable(bool isExecutable);

    /// Flushes everything to the disk.
    void Sync();

    /// Nothing is written any more; the operations below are defined after it.
    void Finish();

    const std::string& Path() const { return _path; }
    std::int64_t Size() const { return _size; }
    /// The time on disk in nanoseconds since 1970.
    std::int64_t Modified() const { return _modified; }
    /// 32 lower-case hexadecimal digits.
    const std::string& Checksum() const { return _checksum; }

private:
    void _Require(bool isDone) const;

    FileDescriptor _folder;
    std::string _name;
    std::string _path;
    FileDescriptor _file;
    Md5 _md5;
    bool _keep = false;
    std::int64_t _size = 0;
    std::int64_t _modified = 0;
    std::string _checksum;
};

}  // namespace service::store
