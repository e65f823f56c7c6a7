#include "service/store/ContentStore.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "service/protocol/ServerPath.h"

namespace service::store {
namespace {

const std::string WorkFolder = std::string(protocol::ReservedName) + "/work";

[[noreturn]] void ThrowErrno(std::string_view action, std::string_view path) {
    const int error = errno;
    throw std::system_error(error, std::generic_category(), std::string(action) + " '" + std::string(path) + "'");
}

bool IsAbsent(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

std::optional<ContentStore::Entry> Describe(int folder, const std::string& name) {
    struct stat status {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (!IsAbsent(errno)) {
            ThrowErrno("Cannot look at", name);
        }
        return std::nullopt;
    }
    ContentStore::Entry entry;
    entry.name = name;
    entry.inode = status.st_ino;
    entry.modified = ModifiedNanoseconds(status);
    if (S_ISDIR(status.st_mode)) {
        entry.kind = ContentStore::Kind::Collection;
    } else if (S_ISREG(status.st_mode)) {
        entry.kind = ContentStore::Kind::File;
        entry.size = status.st_size;
        entry.isExecutable = (status.st_mode & S_IXUSR) != 0;
    }
    return entry;
}

// The clock by which the system gives files their times stands still for up to 10 ms, and two changes in between could
// not be told apart.
void WaitForTheNextTime(std::int64_t modified) {
    constexpr std::chrono::milliseconds longest(20);
    const auto now = std::chrono::system_clock::now();
    const auto age = now.time_since_epoch() - std::chrono::nanoseconds(modified);
    if (age < longest) {
        std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(longest - age, longest));
    }
}

}  // namespace

std::int64_t ModifiedNanoseconds(const struct stat& status) {
    constexpr std::int64_t perSecond = 1000000000;
    constexpr std::int64_t furthest = 9000000000;
    return std::clamp<std::int64_t>(status.st_mtim.tv_sec, -furthest, furthest) * perSecond + status.st_mtim.tv_nsec;
}

bool SetModified(int file, std::int64_t nanoseconds) {
    constexpr std::int64_t perSecond = 1000000000;
    const timespec times[] = {{0, UTIME_OMIT}, {nanoseconds / perSecond, nanoseconds % perSecond}};
    return futimens(file, times) == 0;
}

bool SetExecutable(int file, bool isExecutable) {
    constexpr mode_t forAll = S_IXUSR | S_IXGRP | S_IXOTH;
    struct stat status {};
    if (fstat(file, &status) != 0) {
        return false;
    }
    const mode_t readers = (status.st_mode & (S_IRUSR | S_IRGRP | S_IROTH)) >> 2U;
    const mode_t mode = (status.st_mode & ~forAll & ALLPERMS) | (isExecutable ? readers | S_IXUSR : 0U);
    return fchmod(file, mode) == 0;
}

ContentStore::ContentStore(const std::string& directory)
    : _directory(directory), _root(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (!_root.IsOpen()) {
        ThrowErrno("Cannot serve the folder", directory);
    }
    for (const std::string& folder : {std::string(protocol::ReservedName), WorkFolder}) {
        if (mkdirat(_root.Get(), folder.c_str(), 0777) != 0 && errno != EEXIST) {
            ThrowErrno("Cannot make the folder", folder);
        }
    }
    const FileDescriptor own = _OpenFolder(protocol::ReservedName);
    _lock = FileDescriptor(openat(own.Get(), "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!_lock.IsOpen()) {
        ThrowErrno("Cannot open the lock of the folder", directory);
    }
    if (flock(_lock.Get(), LOCK_EX | LOCK_NB) != 0) {
        throw std::runtime_error("The folder '" + directory + "' is being served by another process");
    }
}

std::string ContentStore::OwnFile(std::string_view name) const {
    return protocol::ChildPath(_directory + "/" + std::string(protocol::ReservedName), name);
}

std::optional<ContentStore::OpenFile> ContentStore::OpenOwn(std::string_view name) const try {
    FileDescriptor file = Open(protocol::ChildPath(protocol::ReservedName, name));
    struct stat status {};
    if (fstat(file.Get(), &status) != 0) {
        ThrowErrno("Cannot look at", name);
    }
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return OpenFile{std::move(file), static_cast<std::uint64_t>(status.st_size)};
} catch (const std::system_error& error) {
    if (IsAbsent(error.code().value())) {
        return std::nullopt;
    }
    throw;
}

FileDescriptor ContentStore::_OpenFolder(std::string_view path) const {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    FileDescriptor folder(openat(_root.Get(), ".", flags));
    for (std::string_view rest = path; folder.IsOpen() && !rest.empty();) {
        const std::size_t length = std::min(rest.find('/'), rest.size());
        folder = FileDescriptor(openat(folder.Get(), std::string(rest.substr(0, length)).c_str(), flags));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    if (!folder.IsOpen() && !IsAbsent(errno)) {
        ThrowErrno("Cannot open the folder", path);
    }
    return folder;
}

std::optional<ContentStore::Entry> ContentStore::Find(std::string_view path) const {
    const FileDescriptor folder = _OpenFolder(protocol::ParentPath(path));
    if (!folder.IsOpen()) {
        return std::nullopt;
    }
    return Describe(folder.Get(), path.empty() ? "." : protocol::LastSegment(path));
}

std::optional<std::vector<ContentStore::Entry>> ContentStore::List(const std::string& path) const {
    FileDescriptor folder = _OpenFolder(path);
    if (!folder.IsOpen()) {
        return std::nullopt;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> names(fdopendir(dup(folder.Get())), closedir);
    if (names == nullptr) {
        ThrowErrno("Cannot list the folder", path);
    }
    std::vector<Entry> entries;
    for (errno = 0; const dirent* found = readdir(names.get()); errno = 0) {
        const std::string name = found->d_name;
        if (!protocol::IsSegment(name) || (path.empty() && protocol::IsReserved(name))) {
            continue;
        }
        auto entry = Describe(folder.Get(), name);
        if (entry && entry->kind != Kind::Other) {
            entries.push_back(std::move(*entry));
        }
    }
    if (errno != 0) {
        ThrowErrno("Cannot list the folder", path);
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

FileDescriptor ContentStore::Open(const std::string& path) const {
    const FileDescriptor folder = _OpenFolder(protocol::ParentPath(path));
    // Not to wait for a writer, should the file have become a pipe.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    FileDescriptor file(folder.IsOpen() ? openat(folder.Get(), protocol::LastSegment(path).c_str(), flags) : -1);
    if (!file.IsOpen()) {
        ThrowErrno("Cannot open", path);
    }
    return file;
}

void ContentStore::SetAttributes(const std::string& path, std::int64_t modified, bool isExecutable) {
    const FileDescriptor file = Open(path);
    if (!SetModified(file.Get(), modified) || !SetExecutable(file.Get(), isExecutable)) {
        ThrowErrno("Cannot change the attributes of", path);
    }
}

std::optional<std::string> ContentStore::Checksum(const std::string& path, std::int64_t size, std::int64_t modified,
                                                  const Interruption& isInterrupted) const try {
    const FileDescriptor file = Open(path);
    const auto isDescribed = [&] {
        struct stat status {};
        return fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink > 0 &&
               status.st_size == size && ModifiedNanoseconds(status) == modified;
    };
    if (!isDescribed()) {
        return std::nullopt;
    }
    WaitForTheNextTime(modified);
    Md5 md5;
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    constexpr unsigned checkedBlocks = 256;
    for (unsigned block = 1; (count = read(file.Get(), buffer.data(), buffer.size())) > 0; ++block) {
        md5.Add(buffer.data(), static_cast<std::size_t>(count));
        const bool isInVain = block % checkedBlocks == 0 && !isDescribed();
        if (isInVain || (isInterrupted && isInterrupted())) {
            return std::nullopt;
        }
    }
    if (count < 0 || !isDescribed()) {
        return std::nullopt;
    }
    return md5.Finish();
} catch (const std::system_error&) {
    return std::nullopt;
}

std::string ContentStore::WorkPath() {
    return protocol::ChildPath(WorkFolder, std::to_string(++_lastWork));
}

std::unique_ptr<UploadFile> ContentStore::MakeFile(const std::string& path) {
    const FileDescriptor folder = _OpenFolder(protocol::ParentPath(path));
    return std::make_unique<UploadFile>(folder.Get(), protocol::LastSegment(path), path);
}

void ContentStore::MakeFolder(const std::string& path) {
    const FileDescriptor folder = _OpenFolder(protocol::ParentPath(path));
    if (mkdirat(folder.Get(), protocol::LastSegment(path).c_str(), 0777) != 0) {
        ThrowErrno("Cannot make the folder", path);
    }
}

void ContentStore::Apply(const std::vector<Rename>& steps) {
    std::set<std::string> folders;
    for (const Rename& step : steps) {
        const FileDescriptor source = _OpenFolder(protocol::ParentPath(step.source));
        const FileDescriptor target = _OpenFolder(protocol::ParentPath(step.target));
        const std::string sourceName = protocol::LastSegment(step.source);
        const std::string targetName = protocol::LastSegment(step.target);
        // Where a second name is not to be had, the file is away for a moment, but not lost.
        const bool isLinked =
            step.keepSource && linkat(source.Get(), sourceName.c_str(), target.Get(), targetName.c_str(), 0) == 0;
        if (!isLinked && renameat(source.Get(), sourceName.c_str(), target.Get(), targetName.c_str()) != 0) {
            ThrowErrno("Cannot rename to '" + step.target + "'", step.source);
        }
        folders.insert(protocol::ParentPath(step.source));
        folders.insert(protocol::ParentPath(step.target));
    }
    for (const std::string& folder : folders) {
        if (folder != WorkFolder && fsync(_OpenFolder(folder).Get()) != 0) {
            ThrowErrno("Cannot write the folder", folder);
        }
    }
}

void ContentStore::Undo(const std::vector<Rename>& steps) {
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        const auto moved = Find(step->target);
        const FileDescriptor source = _OpenFolder(protocol::ParentPath(step->source));
        if (!moved || moved->inode != step->inode || !source.IsOpen() || Find(step->source)) {
            continue;
        }
        const FileDescriptor target = _OpenFolder(protocol::ParentPath(step->target));
        if (renameat(target.Get(), protocol::LastSegment(step->target).c_str(), source.Get(),
                     protocol::LastSegment(step->source).c_str()) != 0) {
            ThrowErrno("Cannot rename back to '" + step->source + "'", step->target);
        }
    }
}

void ContentStore::RemoveWork(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove_all(_directory + "/" + path, ignored);
}

void ContentStore::ClearWork() {
    for (const auto& left : std::filesystem::directory_iterator(_directory + "/" + WorkFolder)) {
        std::filesystem::remove_all(left.path());
    }
}

}  // namespace service::store
