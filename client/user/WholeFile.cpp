#include "client/user/WholeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "client/user/Places.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace user {

using sync::core::SyncException;

namespace {

[[noreturn]] void ThrowError(const QString& path, int code) {
    throw SyncException(QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(code))));
}

/// An open file or folder. Throws when it could not be opened.
class Descriptor {
public:
    Descriptor(int descriptor, const QString& path) : _descriptor(descriptor) {
        if (_descriptor < 0) {
            ThrowError(path, errno);
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
            ThrowError(_target, errno);
        }
    }

    const QString _target;
    QByteArray _path;
    const Descriptor _file;
    bool _isPlaced = false;
};

}  // namespace

QByteArray ReadWholeFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (file.exists() || QFileInfo(path).isSymLink()) {
            throw SyncException(QStringLiteral("%1: %2").arg(path, file.errorString()));
        }
        return QByteArray();
    }
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        throw SyncException(QStringLiteral("%1: %2").arg(path, file.errorString()));
    }
    return content;
}

void EditWholeFile(const QString& path, mode_t mode, const std::function<QByteArray(const QByteArray&)>& edit) {
    const QString real = QFileInfo(path).canonicalFilePath();
    const QString target = real.isEmpty() ? path : real;
    const QString folder = QFileInfo(target).absolutePath();
    MakePrivateFolder(folder);
    const Descriptor place(open(folder.toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), folder);
    // It ends with the descriptor.
    if (flock(place.Get(), LOCK_EX) != 0) {
        ThrowError(folder, errno);
    }
    const QByteArray before = ReadWholeFile(target);
    const QByteArray after = edit(before);
    struct stat status {};
    const bool isThere = stat(target.toUtf8().constData(), &status) == 0;
    if (isThere && after == before && (status.st_mode & ~mode & 07777) == 0) {
        return;
    }
    NewFile file(target, isThere ? status.st_mode & mode & 07777 : mode);
    file.Write(after);
    file.Place();
    if (fsync(place.Get()) != 0 && errno != EINVAL) {
        ThrowError(folder, errno);
    }
}

}  // namespace user
}  // namespace ovsync
