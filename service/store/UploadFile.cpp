#include "service/store/UploadFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "service/store/ContentStore.h"

namespace service::store {

UploadFile::UploadFile(int folder, const std::string& name, std::string path)
    : _folder(fcntl(folder, F_DUPFD_CLOEXEC, 0)),
      _name(name),
      _path(std::move(path)),
      _file(openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666)) {
    if (!_folder.IsOpen() || !_file.IsOpen()) {
        throw std::system_error(errno, std::generic_category(), "Cannot make the file " + _path);
    }
}

UploadFile::~UploadFile() {
    if (!_keep) {
        unlinkat(_folder.Get(), _name.c_str(), 0);
    }
}

void UploadFile::Write(std::string_view data) {
    _md5.Add(data.data(), data.size());
    while (!data.empty()) {
        const ssize_t count = write(_file.Get(), data.data(), data.size());
        if (count < 0) {
            throw std::system_error(errno, std::generic_category(), "Cannot write the file " + _path);
        }
        data.remove_prefix(static_cast<std::size_t>(count));
    }
}

void UploadFile::Fill(int source, const Interruption& isInterrupted) {
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = read(source, buffer.data(), buffer.size())) > 0) {
        ThrowIf(isInterrupted);
        Write({buffer.data(), static_cast<std::size_t>(count)});
    }
    if (count < 0) {
        throw std::system_error(errno, std::generic_category(), "Cannot read what " + _path + " is a copy of");
    }
}

void UploadFile::SetModified(std::int64_t nanoseconds) {
    _Require(store::SetModified(_file.Get(), nanoseconds));
}

void UploadFile::SetExecutable(bool isExecutable) {
    _Require(store::SetExecutable(_file.Get(), isExecutable));
}

void UploadFile::Sync() {
    _Require(fsync(_file.Get()) == 0);
}

void UploadFile::Finish() {
    struct stat status {};
    _Require(fstat(_file.Get(), &status) == 0);
    _size = status.st_size;
    _modified = ModifiedNanoseconds(status);
    _checksum = _md5.Finish();
}

void UploadFile::_Require(bool isDone) const {
    if (!isDone) {
        throw std::system_error(errno, std::generic_category(), "Cannot write the file " + _path);
    }
}

}  // namespace service::store
