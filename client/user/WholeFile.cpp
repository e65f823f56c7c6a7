#include "client/user/WholeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <utility>

#include "client/sync/local/LocalError.h"
#include "client/user/Places.h"

namespace ovsync {
namespace user {

using local::LocalError;

namespace {

/// An open file or folder. Throws when it could not be opened.
class Descriptor {
public:
    Descriptor(int descriptor, const QString& path) : _descriptor(descriptor) {
        if (_descriptor < 0) {
            throw LocalError(path, errno);
        }
    }
    ~Descriptor() { close(_descriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return _descriptor; }

private:
    const int _descriptor;
};

/// A temporary file, which goes with this object unless it took a place.
class NewFile {
public:
    NewFile(const QString& target, mode_t mode)
        : _target(target), _path(target.toUtf8() + ".XXXXXX"), _file(mkostemp(_path.data(), O_CLOEXEC), target) {
        _Check(fchmod(_file.Get(), mode) == 0);
    }
    ~NewFile() {
        if (!_isPlaced) {
            unlink(_path.constData());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void Write(const QByteArray& content) {
        for (int done = 0; done < content.size();) {
            const ssize_t written =
                write(_file.Get(), content.constData() + done, static_cast<size_t>(content.size() - done));
            _Check(written >= 0 || errno == EINTR);
            done += written > 0 ? static_cast<int>(written) : 0;
        }
        _Check(fsync(_file.Get()) == 0);
    }

    void Place() {
        _Check(std::rename(_path.constData(), _target.toUtf8().constData()) == 0);
        _isPlaced = true;
    }

private:
    void _Check(bool isDone) const {
        if (!isDone) {
            throw LocalError(_target, errno);
        }
    }

    const QString _target;
    QByteArray _path;
    const Descriptor _file;
    bool _isPlaced = false;
};

/// A folder that other editors wait for. A thread that has it already, because it edits one file in the midst of
/// editing another one there, does not wait for itself.
class LockedFolder {
public:
    explicit LockedFolder(const QString& path)
        : _path(path), _folder(open(path.toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), path) {
        struct stat status {};
        _Check(fstat(_folder.Get(), &status) == 0);
        _id = {status.st_dev, status.st_ino};
        _isHeld = _held.count(_id) > 0;
        // It ends with the descriptor.
        _Check(_isHeld || flock(_folder.Get(), LOCK_EX) == 0);
        _held.insert(_id);
    }
    ~LockedFolder() {
        if (!_isHeld) {
            _held.erase(_id);
        }
    }
    LockedFolder(const LockedFolder&) = delete;
    LockedFolder& operator=(const LockedFolder&) = delete;

    void Flush() const { _Check(fsync(_folder.Get()) == 0 || errno == EINVAL); }

private:
    void _Check(bool isDone) const {
        if (!isDone) {
            throw LocalError(_path, errno);
        }
    }

    static thread_local std::set<std::pair<dev_t, ino_t>> _held;

    const QString _path;
    const Descriptor _folder;
    std::pair<dev_t, ino_t> _id;
    /// By an edit around this one.
    bool _isHeld = false;
};

thread_local std::set<std::pair<dev_t, ino_t>> LockedFolder::_held;

}  // namespace

QByteArray ReadWholeFile(const QString& path) {
    const int opened = open(path.toUtf8().constData(), O_RDONLY | O_CLOEXEC);
    if (opened < 0 && errno == ENOENT && !QFileInfo(path).isSymLink()) {
        return QByteArray();
    }
    const Descriptor file(opened, path);
    QByteArray content;
    char part[4096];
    for (ssize_t count = -1; count != 0;) {
        count = read(file.Get(), part, sizeof(part));
        if (count < 0 && errno != EINTR) {
            throw LocalError(path, errno);
        }
        content.append(part, static_cast<int>(qMax<ssize_t>(0, count)));
    }
    return content;
}

void EditWholeFile(const QString& path, mode_t mode, const std::function<QByteArray(const QByteArray&)>& edit,
                   const std::function<void()>& beforePlacing) {
    const QString real = QFileInfo(path).canonicalFilePath();
    const QString target = real.isEmpty() ? path : real;
    const QString folder = QFileInfo(target).absolutePath();
    MakePrivateFolder(folder);
    const LockedFolder place(folder);
    const QByteArray before = ReadWholeFile(target);
    const QByteArray after = edit(before);
    struct stat status {};
    const bool isThere = stat(target.toUtf8().constData(), &status) == 0;
    if (isThere && after == before && (status.st_mode & ~mode & 07777) == 0) {
        return;
    }
    NewFile file(target, isThere ? status.st_mode & mode & 07777 : mode);
    file.Write(after);
    beforePlacing();
    file.Place();
    place.Flush();
}

}  // namespace user
}  // namespace ovsync
