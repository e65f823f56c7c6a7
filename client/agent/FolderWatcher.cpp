#include "client/agent/FolderWatcher.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QVector>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "client/store/RecordDatabase.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace agent {

namespace {

const uint32_t FolderEvents =
    IN_CREATE | IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR | IN_EXCL_UNLINK;

/// Beyond that it is no more work to look at everything.
const int MostPaths = 100000;

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// The names of the folders right in the one at `path`, the hidden one among them.
QVector<QByteArray> FoldersIn(const QByteArray& path) {
    QVector<QByteArray> names;
    const std::unique_ptr<DIR, FolderCloser> folder(opendir(path.constData()));
    while (const dirent* const entry = folder ? readdir(folder.get()) : nullptr) {
        const QByteArray name(entry->d_name);
        struct stat status {};
        const bool isFolder = entry->d_type == DT_DIR ||
                              (entry->d_type == DT_UNKNOWN && lstat((path + '/' + name).constData(), &status) == 0 &&
                               S_ISDIR(status.st_mode));
        if (isFolder && name != "." && name != "..") {
            names.append(name);
        }
    }
    return names;
}

QString GoneText() {
    return QStringLiteral("the folder is not there");
}

QString LimitText() {
    QFile limit(QStringLiteral("/proc/sys/fs/inotify/max_user_watches"));
    const QByteArray number = limit.open(QIODevice::ReadOnly) ? limit.readAll().trimmed() : QByteArray("?");
    return QStringLiteral(
               "the system watches no more folders for you than %1 (fs.inotify.max_user_watches). To raise that, write "
               "\"fs.inotify.max_user_watches=1048576\" into /etc/sysctl.d/50-ovsync.conf and run \"sysctl --system\", "
               "both as root; the next pass notices")
        .arg(QString::fromLatin1(number));
}

}  // namespace

FolderWatcher::FolderWatcher(const QString& root, const local::Exclusion& exclusion)
    : _root(root.toUtf8()), _exclusion(exclusion) {}

FolderWatcher::~FolderWatcher() {
    _Stop(QString());
}

void FolderWatcher::Watch() {
    if (_descriptor >= 0) {
        return;
    }
    _problem.clear();
    _descriptor = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (_descriptor < 0) {
        _problem = QStringLiteral("the system lets you watch no further folder (fs.inotify.max_user_instances): %1")
                       .arg(QString::fromLocal8Bit(std::strerror(errno)));
        return;
    }
    _WatchTree(-1, QByteArray());
}

bool FolderWatcher::TakeChanges() {
    bool isConcerned = false;
    _isAccessChanged = false;
    alignas(inotify_event) char buffer[16 * 1024];
    while (_descriptor >= 0) {
        const ssize_t size = read(_descriptor, buffer, sizeof(buffer));
        if (size <= 0) {
            if (size < 0 && errno == EINTR) {
                continue;
            }
            break;
        }
        // When events were lost everything is watched anew, and those that are left mean nothing.
        const int stops = _stops;
        for (ssize_t position = 0; position < size && _stops == stops;) {
            inotify_event event{};
            std::memcpy(&event, buffer + position, sizeof(event));
            const QByteArray name(event.len > 0 ? buffer + position + sizeof(event) : "");
            isConcerned = _IsConcernedBy(event, name) || isConcerned;
            position += static_cast<ssize_t>(sizeof(event) + event.len);
        }
    }
    return isConcerned;
}

bool FolderWatcher::_IsConcernedBy(const inotify_event& event, const QByteArray& name) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        _Stop(QString());
        Watch();
        return true;
    }
    if (event.wd == _rootWatch && (event.mask & (IN_IGNORED | IN_MOVE_SELF | IN_UNMOUNT)) != 0) {
        _Stop(GoneText());
        return true;
    }
    if ((event.mask & IN_IGNORED) != 0) {
        _folders.remove(event.wd);
        return false;
    }
    const bool isOfAttributes = (event.mask & IN_ATTRIB) != 0;
    const bool isOfFolder = (event.mask & IN_ISDIR) != 0;
    // What must not be read or written now may concern everything in it. Of the other folders those above tell.
    if (event.wd == _rootWatch && isOfAttributes && isOfFolder && name.isEmpty()) {
        _isAccessChanged = true;
        _paths.reset();
        return true;
    }
    if (!_folders.contains(event.wd) || name.isEmpty() || (isOfAttributes && !isOfFolder)) {
        return false;
    }
    if (isOfFolder) {
        if (_IsLeftAlone(event.wd, name)) {
            return false;
        }
        _AddPath(_PathOf(event.wd, name));
        if ((event.mask & IN_MOVED_FROM) != 0) {
            _ForgetTree(event.wd, name);
        } else if ((event.mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
            _WatchTree(event.wd, name);
        } else if (isOfAttributes) {
            _isAccessChanged = true;
            _WatchReadable(event.wd, name);
        }
        return true;
    }
    const QByteArray path = _PathOf(event.wd, name);
    if (local::IsTemporaryName(QString::fromUtf8(name)) || _exclusion.HasFile(QString::fromUtf8(path))) {
        return false;
    }
    // What was only made has nothing in it yet, unless it is a further name of a file.
    struct stat status {};
    const bool isConcerned =
        (event.mask & IN_CREATE) == 0 || (lstat((_root + '/' + path).constData(), &status) == 0 && status.st_nlink > 1);
    if (isConcerned) {
        _AddPath(path);
    }
    return isConcerned;
}

void FolderWatcher::_AddPath(const QByteArray& path) {
    const QString text = QString::fromUtf8(path);
    if (text.toUtf8() != path || (_paths && _paths->size() >= MostPaths)) {
        _paths.reset();
    } else if (_paths) {
        _paths->insert(text);
    }
}

std::optional<QSet<QString>> FolderWatcher::HandOutPaths() {
    std::optional<QSet<QString>> paths = std::move(_paths);
    _paths.reset();
    if (_descriptor >= 0) {
        _paths.emplace();
    }
    return paths;
}

void FolderWatcher::_Stop(const QString& problem) {
    if (_descriptor >= 0) {
        close(_descriptor);
    }
    _descriptor = -1;
    _rootWatch = -1;
    _folders.clear();
    _paths.reset();
    _problem = problem;
    ++_stops;
}

void FolderWatcher::_WatchTree(int parent, const QByteArray& name) {
    QVector<std::pair<int, QByteArray>> waiting{{parent, name}};
    while (!waiting.isEmpty() && _descriptor >= 0) {
        const auto [above, next] = waiting.takeLast();
        const int watch = _WatchFolder(above, next);
        if (watch < 0) {
            continue;
        }
        // After the watch was added, so that what comes meanwhile is seen one way or the other.
        const QVector<QByteArray> folders = FoldersIn(_root + '/' + _PathOf(watch));
        if (watch != _rootWatch && folders.contains(store::RecordDatabase::HiddenFolder().toUtf8())) {
            _Forget(watch);
            continue;
        }
        for (const QByteArray& folder : folders) {
            if (!_IsLeftAlone(watch, folder)) {
                waiting.append({watch, folder});
            }
        }
    }
}

int FolderWatcher::_WatchFolder(int parent, const QByteArray& name) {
    const bool isRoot = parent < 0;
    const QByteArray path = isRoot ? _root : _root + '/' + _PathOf(parent, name);
    const int watch =
        inotify_add_watch(_descriptor, path.constData(), FolderEvents | (isRoot ? IN_MOVE_SELF : IN_DONT_FOLLOW));
    if (watch >= 0) {
        _folders.insert(watch, {parent, name});
        _rootWatch = isRoot ? watch : _rootWatch;
        return watch;
    }
    const int code = errno;
    if (code == ENOSPC || code == ENOMEM) {
        _Stop(LimitText());
    } else if (isRoot) {
        _Stop(code == ENOENT || code == ENOTDIR ? GoneText() : QString::fromLocal8Bit(std::strerror(code)));
    }
    // Any other folder is gone again, or must not be read, which passes tell of.
    return -1;
}

void FolderWatcher::_WatchReadable(int parent, const QByteArray& name) {
    const int watched = _folders.size();
    _WatchFolder(parent, name);
    if (_folders.size() > watched) {
        _WatchTree(parent, name);
    }
}

void FolderWatcher::_ForgetTree(int parent, const QByteArray& name) {
    const auto top = std::find_if(_folders.begin(), _folders.end(), [parent, &name](const Folder& folder) {
        return folder.parent == parent && folder.name == name;
    });
    if (top == _folders.end()) {
        return;
    }
    QVector<int> gone{top.key()};
    for (int i = 0; i < gone.size(); ++i) {
        for (auto folder = _folders.cbegin(); folder != _folders.cend(); ++folder) {
            if (folder->parent == gone.at(i)) {
                gone.append(folder.key());
            }
        }
    }
    for (const int watch : gone) {
        _Forget(watch);
    }
}

void FolderWatcher::_Forget(int watch) {
    _folders.remove(watch);
    inotify_rm_watch(_descriptor, watch);
}

bool FolderWatcher::_IsLeftAlone(int parent, const QByteArray& folder) const {
    return QString::fromUtf8(folder) == store::RecordDatabase::HiddenFolder() ||
           _exclusion.HasFolder(QString::fromUtf8(_PathOf(parent, folder)));
}

QByteArray FolderWatcher::_PathOf(int watch) const {
    const auto folder = _folders.constFind(watch);
    if (folder == _folders.constEnd() || folder->parent < 0) {
        return QByteArray();
    }
    return _PathOf(folder->parent, folder->name);
}

QByteArray FolderWatcher::_PathOf(int parent, const QByteArray& name) const {
    const QByteArray above = _PathOf(parent);
    return above.isEmpty() ? name : above + '/' + name;
}

}  // namespace agent
}  // namespace ovsync
