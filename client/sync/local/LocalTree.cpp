#include "client/sync/local/LocalTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QByteArrayList>
#include <QSysInfo>
#include <QVersionNumber>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <iterator>

#include "client/store/FolderIdentity.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalEntry.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/LocalFile.h"

namespace ovsync {
namespace local {

namespace {

/// Whether the kernel is known to flush by syncfs whatever fsync of each file would flush, and to tell failures.
bool FlushesAllAtOnce(int descriptor) {
    // Before, it did not tell what could not be written.
    static const bool tells = QVersionNumber::fromString(QSysInfo::kernelVersion()) >= QVersionNumber(5, 8);
    // Other file systems, such as those of FUSE, do nothing.
    static const long known[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC};
    struct statfs disk {};
    return tells && fstatfs(descriptor, &disk) == 0 &&
           std::find(std::begin(known), std::end(known), disk.f_type) != std::end(known);
}

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
    /// Of the folder `path` the place is "." in itself. A folder that it shares with `other`, which outlives it, is
    /// opened once.
    Place(const LocalTree& tree, const QString& path, const Place* other = nullptr)
        : _root(tree._root), _rootPath(tree._rootPath), _path(path) {
        QByteArrayList segments = path.toUtf8().split('/');
        segments.removeAll(QByteArray());
        for (const QByteArray& segment : segments) {
            // The callers only name what lies below; this holds even if one of them fails to.
            if (segment == "." || segment == ".." || segment.contains('\0')) {
                throw LocalError(Path(), EINVAL);
            }
        }
        _name = segments.isEmpty() ? QByteArray(".") : segments.takeLast();
        _folderNames = segments.join('/');
        if (other != nullptr && other->_folderNames == _folderNames) {
            _folder = other->_folder;
            _error = other->_error;
            return;
        }
        _folder = segments.isEmpty() ? _root : _OpenFolder(segments);
        _error = _folder < 0 ? errno : 0;
        _isOwner = _folder >= 0 && _folder != _root;
    }

    ~Place() {
        if (_isOwner) {
            close(_folder);
        }
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    int Folder() const { return _folder; }
    const char* Name() const { return _name.constData(); }
    QString Path() const { return _rootPath + QLatin1Char('/') + _path; }

    /// Why the folder could not be opened; 0 when it was.
    int Error() const { return _error; }

    /// Throws the error of the folder, or that of the system call whose result `isDone` is.
    void Check(bool isDone) const {
        if (_error != 0 || !isDone) {
            Throw();
        }
    }

    [[noreturn]] void Throw() const {
        const int code = _error != 0 ? _error : errno;
        throw LocalError(Path(), code);
    }

private:
    static constexpr int OpenFlags = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

    /// Follows no link, also where somebody puts one at this moment.
    int _OpenFolder(const QByteArrayList& names) const {
        static std::atomic<bool> knowsOpenat2(true);
        if (knowsOpenat2) {
            open_how how{};
            how.flags = O_PATH | OpenFlags;
            how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
            const long folder = syscall(SYS_openat2, _root, _folderNames.constData(), &how, sizeof how);
            // Of EPERM it is a filter of system calls that answers so.
            if (folder >= 0 || (errno != ENOSYS && errno != EPERM && errno != ENAMETOOLONG)) {
                return static_cast<int>(folder);
            }
            knowsOpenat2 = errno == ENAMETOOLONG;
        }
        int folder = _root;
        for (const QByteArray& name : names) {
            const int next = openat(folder, name.constData(), O_PATH | OpenFlags);
            const int code = errno;
            if (folder != _root) {
                close(folder);
            }
            errno = code;
            folder = next;
            if (folder < 0) {
                break;
            }
        }
        return folder;
    }

    const int _root;
    const QString& _rootPath;
    const QString& _path;
    QByteArray _name;
    QByteArray _folderNames;
    int _folder = -1;
    bool _isOwner = false;
    int _error = 0;
};

LocalTree::LocalTree(const QString& root)
    : _rootPath(root), _root(open(root.toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    struct stat status {};
    if (_root < 0 || fstat(_root, &status) != 0) {
        throw LocalError(root, errno);
    }
    if (FlushesAllAtOnce(_root)) {
        _device = status.st_dev;
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
        // At the beginning of a text a byte order mark would be dropped.
        entry.name = QString::fromUtf8('/' + name).mid(1);
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
    return std::make_unique<LocalFile>(descriptor, place.Path(), _IsSyncedWithAll(descriptor));
}

std::unique_ptr<IWritableFile> LocalTree::Reopen(const QString& path) {
    const Place place(*this, path);
    const int descriptor = openat(place.Folder(), place.Name(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    place.Check(descriptor >= 0);
    auto file = std::make_unique<LocalFile>(descriptor, place.Path(), _IsSyncedWithAll(descriptor));
    struct stat status {};
    place.Check(fstat(descriptor, &status) == 0);
    if (!S_ISREG(status.st_mode)) {
        throw LocalError(place.Path(), EINVAL);
    }
    return file;
}

bool LocalTree::_IsSyncedWithAll(int file) const {
    struct stat status {};
    return _device && fstat(file, &status) == 0 && status.st_dev == *_device;
}

void LocalTree::MakeFolder(const QString& path) {
    const Place place(*this, path);
    place.Check(mkdirat(place.Folder(), place.Name(), 0777) == 0);
}

bool LocalTree::Move(const QString& from, const QString& to) {
    const Place source(*this, from);
    const Place target(*this, to, &source);
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
    const Place second(*this, b, &first);
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

void LocalTree::SyncAll() {
    // By the descriptor that was open before anything was written: it is told of every failure since.
    if (syncfs(_root) != 0) {
        throw LocalError(_rootPath, errno);
    }
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
