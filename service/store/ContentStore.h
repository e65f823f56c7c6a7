#pragma once

#include <sys/stat.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/store/FileDescriptor.h"
#include "service/store/Interruption.h"
#include "service/store/Rename.h"
#include "service/store/UploadFile.h"

namespace service::store {

/// The time of a file in nanoseconds since 1970, clamped to what 64 bits can hold.
std::int64_t ModifiedNanoseconds(const struct stat& status);

/// Gives an open file a time. Returns false, with errno set, when the system refuses. So does the next one.
bool SetModified(int file, std::int64_t nanoseconds);

/// Has an open file executable for all who may read it, or for nobody.
bool SetExecutable(int file, bool isExecutable);

/// The files and folders below the served folder. Paths are server paths, and for the service's own files paths that
/// begin with the reserved name. Symbolic links are never followed, so nothing outside is touched.
/// Throws std::system_error with the path when the system refuses. Thread-safe as far as the file system is.
class ContentStore {
public:
    enum class Kind { File, Collection, Other };

    struct Entry {
        std::string name;
        Kind kind = Kind::Other;
        /// Bytes of a file.
        std::int64_t size = 0;
        /// In nanoseconds since 1970.
        std::int64_t modified = 0;
        std::uint64_t inode = 0;
        /// Whether the owner of a file may execute it.
        bool isExecutable = false;
    };

    /// Takes `directory` for this process alone. Throws std::runtime_error when another process has it.
    explicit ContentStore(const std::string& directory);

    /// The file of that name that belongs to the service, as a path that any process can open.
    std::string OwnFile(std::string_view name) const;

    struct OpenFile {
        FileDescriptor file;
        /// In bytes.
        std::uint64_t size = 0;
    };

    /// A file that belongs to the service, opened for reading; nothing when there is no such file.
    std::optional<OpenFile> OpenOwn(std::string_view name) const;

    /// What has this name; nothing when nothing has.
    std::optional<Entry> Find(std::string_view path) const;

    /// The files and folders in a folder, in the order of the bytes of their names; nothing when there is no such
    /// folder. Leaves out everything else, names that are not UTF-8, and reserved ones.
    std::optional<std::vector<Entry>> List(const std::string& path) const;

    /// Opens a file for reading.
    FileDescriptor Open(const std::string& path) const;

    /// Gives a file a time (nanoseconds since 1970) and has it executable for all who may read it, or for nobody.
    void SetAttributes(const std::string& path, std::int64_t modified, bool isExecutable);

    /// The checksum of a file, 32 lower-case hexadecimal digits; nothing when it cannot be read, is not the one
    /// described by `size` and `modified`, or when it was interrupted. Whoever changes the file from then on gives it
    /// another time.
    std::optional<std::string> Checksum(const std::string& path, std::int64_t size, std::int64_t modified,
                                        const Interruption& isInterrupted = {}) const;

    /// A new path below the service's own folder that nothing has.
    std::string WorkPath();

    /// Makes a file at `path`.
    [[nodiscard]] std::unique_ptr<UploadFile> MakeFile(const std::string& path);
    /// Makes a folder at `path`.
    void MakeFolder(const std::string& path);

    /// Takes the steps in order and flushes the new names to the disk.
    void Apply(const std::vector<Rename>& steps);
    /// Takes back those steps that were taken, in reverse order.
    void Undo(const std::vector<Rename>& steps);
    /// Removes everything at `path`, which must be a work path; what cannot be removed stays until ClearWork().
    void RemoveWork(const std::string& path);
    /// Removes what an earlier process left at work paths.
    void ClearWork();

private:
    FileDescriptor _OpenFolder(std::string_view path) const;

    std::string _directory;
    FileDescriptor _root;
    FileDescriptor _lock;
    std::atomic<std::uint64_t> _lastWork{0};
};

}  // namespace service::store
