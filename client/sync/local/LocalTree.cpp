#include "client/sync/local/LocalTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QStringList>
#include <cerrno>
#include <cstdio>

#include "client/store/FolderIdentity.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalEntry.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/LocalFile.h"

namespace ovsync {
namespace local {

namespace {

/// Whether the system or the file system does not know this kind of renaming.
bool IsUnknownToFileSystem(int code) {
    return code == EINVAL || code == ENOSYS || code == ENOTSUP;
}

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

}  // namespace

/// The last name of a path, and the open folder that it lies in.
class LocalTree::Place {
public:
    /// Of the folder `path` the place is "." in itself.
    Place(const LocalTree& tree, const QString& path) : _path(tree._rootPath + QLatin1Char('/') + path) {
        QStringList segments = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        for (const QString& segment : segments) {
            // The callers only name what lies below; this holds even if one of them fails to.
            if (segment == QLatin1String(".") || segment == QLatin1String("..") || segment.contains(QChar(0))) {
                throw LocalError(_path, EINVAL);
            }
        }
        _name = segments.isEmpty() ? QByteArray(".") : segments.takeLast().toUtf8();
        _folder = fcntl(tree._root, F_DUPFD_CLOEXEC, 0);
        for (const QString& segment : segments) {
            const int next = _OpenFolder(segment.toUtf8());
            const int code = errno;
            if (_folder >= 0) {
                close(_folder);
            }
            _folder = next;
            errno = code;
        }
        _error = _folder < 0 ? errno : 0;
    }

    ~Place() {
        if (_folder >= 0) {
            close(_folder);
        }
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    int Folder() const { return _folder; }
    const char* Name() const { return _name.constData(); }
    const QString& Path() const { return _path; }

    /// Why the folder could not be opened; 0 when it was.
    int Error() const { return _error; }

    /// Throws the error of the folder, or that of the system call whose result `isDone` is.
    void Check(bool isDone) const {
        if (_error != 0 || !isDone) {
            Throw();
        }
    }

    [[noreturn]] void Throw() const { throw LocalError(_path, _error != 0 ? _error : errno); }

private:
    int _OpenFolder(const QByteArray& name) const {
        return _folder < 0 ? -1 : openat(_folder, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }

    const QString _path;
    QByteArray _name;
    int _folder = -1;
    int _error = 0;
};

LocalTree::LocalTree(const QString& root)
    : _rootPath(root), _root(open(root.toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (_root < 0) {
        throw LocalError(root, errno);
    }
}

LocalTree::~LocalTree() {
    close(_root);
}

QVector<NamedLocalEntry> LocalTree::List(const QString& folder) {
    const Place place(*this, folder);
    const int descriptor = openat(place.Folder(), place.Name(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    place.Check(descriptor >= 0);
    const std::unique_ptr<DIR, FolderCloser> open(fdopendir(descriptor));
    place.Check(open != nullptr);
    QVector<NamedLocalEntry> entries;
    for (;;) {
        errno = 0;
        const dirent* const next = readdir(open.get());
        if (next == nullptr) {
            place.Check(errno == 0);
            return entries;
        }
        const QByteArray name(next->d_name);
        struct stat status {};
        if (name == "." || name == "..") {
            continue;
        }
        if (fstatat(descriptor, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            // Gone since it was listed.
            place.Check(errno == ENOENT);
            continue;
        }
        NamedLocalEntry entry;
        static_cast<LocalEntry&>(entry) = EntryOf(status);
        entry.name = QString::fromUtf8(name);
        entry.isUtf8 = entry.name.toUtf8() == name;
        entries.append(entry);
    }
}

std::optional<LocalEntry> LocalTree::Look(const QString& path) {
    const Place place(*this, path);
    struct stat status {};
    if (place.Error() == 0 && fstatat(place.Folder(), place.Name(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        return EntryOf(status);
    }
    const int code = place.Error() != 0 ? place.Error() : errno;
    // ELOOP: a link stands where a folder should.
    if (code == ENOENT || code == ENOTDIR || code == ELOOP) {
        return std::nullopt;
    }
    throw LocalError(place.Path(), code);
}

std::unique_ptr<IReadableFile> LocalTree::Open(const QString& path) {
    const Place place(*this, path);
    // Opening a pipe would wait for its other end.
    const int descriptor = openat(place.Folder(), place.Name(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    place.Check(descriptor >= 0);
    auto file = std::make_unique<LocalFile>(descriptor, place.Path());
    struct stat status {};
    place.Check(fstat(descriptor, &status) == 0);
    if (!S_ISREG(status.st_mode)) {
        throw LocalError(place.Path(), EINVAL);
    }
    return file;
}

std::unique_ptr<IWritableFile> LocalTree::Create(const QString& path) {
    const Place place(*this, path);
    const int descriptor =
        openat(place.Folder(), place.Name(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    place.Check(descriptor >= 0);
    return std::make_unique<LocalFile>(descriptor, place.Path());
}

void LocalTree::MakeFolder(const QString& path) {
    const Place place(*this, path);
    place.Check(mkdirat(place.Folder(), place.Name(), 0777) == 0);
}

bool LocalTree::Move(const QString& from, const QString& to) {
    const Place source(*this, from);
    const Place target(*this, to);
    source.Check(true);
    target.Check(true);
    if (renameat2(source.Folder(), source.Name(), target.Folder(), target.Name(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (IsUnknownToFileSystem(errno)) {
        // A second name, where the file system has them, is not given over an existing one either.
        if (linkat(source.Folder(), source.Name(), target.Folder(), target.Name(), 0) == 0) {
            source.Check(unlinkat(source.Folder(), source.Name(), 0) == 0);
            return true;
        }
        if (errno != EEXIST) {
            if (Look(to)) {
                return false;
            }
            target.Check(renameat(source.Folder(), source.Name(), target.Folder(), target.Name()) == 0);
            return true;
        }
    }
    target.Check(errno == EEXIST);
    return false;
}

bool LocalTree::Swap(const QString& a, const QString& b) {
    const Place first(*this, a);
    const Place second(*this, b);
    first.Check(true);
    second.Check(true);
    if (renameat2(first.Folder(), first.Name(), second.Folder(), second.Name(), RENAME_EXCHANGE) == 0) {
        return true;
    }
    second.Check(IsUnknownToFileSystem(errno));
    return false;
}

void LocalTree::Remove(const QString& path) {
    const Place place(*this, path);
    if (place.Error() != ENOENT) {
        place.Check(unlinkat(place.Folder(), place.Name(), 0) == 0 || errno == ENOENT);
    }
}

bool LocalTree::RemoveFolder(const QString& path) {
    const Place place(*this, path);
    if (unlinkat(place.Folder(), place.Name(), AT_REMOVEDIR) == 0) {
        return true;
    }
    place.Check(errno == ENOTEMPTY || errno == EEXIST);
    return false;
}

void LocalTree::SyncFolder(const QString& folder) {
    const Place place(*this, folder);
    const int descriptor = openat(place.Folder(), place.Name(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    place.Check(descriptor >= 0);
    const bool isSynced = fsync(descriptor) == 0;
    const int code = errno;
    close(descriptor);
    errno = code;
    // Some network file systems have nothing to sync.
    place.Check(isSynced || errno == EINVAL);
}

QString LocalTree::Identity() {
    QString identity = store::FolderIdentity(_root);
    if (identity.isEmpty()) {
        throw LocalError(_rootPath, errno);
    }
    return identity;
}

bool LocalTree::TellsCaseApart() {
    return _TellsApart("case-a", "CASE-A");
}

bool LocalTree::TellsUnicodeFormsApart() {
    // The letter e with an acute accent, as one character and as two.
    return _TellsApart("form-\xC3\xA9", "form-e\xCC\x81");
}

bool LocalTree::_TellsApart(const char* made, const char* asked) {
    const QString folder = store::RecordDatabase::HiddenFolder() + QLatin1Char('/');
    const QString probe = folder + QString::fromUtf8(made);
    Remove(probe);
    Create(probe);
    const bool isFound = Look(folder + QString::fromUtf8(asked)).has_value();
    Remove(probe);
    return !isFound;
}

}  // namespace local
}  // namespace ovsync
