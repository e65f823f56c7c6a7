#include "client/sync/both/Moves.h"

#include <algorithm>
#include <cerrno>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/part/LastState.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/push/Uploader.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace both {

using local::FolderOf;
using local::LocalEntry;
using local::LocalError;
using pass::LocalFileState;
using report::SyncEvent;
using store::FileRecord;
using store::FolderRecord;
using store::RecordDatabase;
using sync::http::HttpException;
using wire::HttpStatus;

namespace {

QSet<QString> SetOf(const QStringList& paths) {
    return {paths.begin(), paths.end()};
}

/// The folders above `path`, from the uppermost one down.
QStringList FoldersAbove(const QString& path) {
    QStringList folders;
    for (QString folder = FolderOf(path); !folder.isEmpty(); folder = FolderOf(folder)) {
        folders.prepend(folder);
    }
    return folders;
}

bool IsIn(const QString& path, const QString& folder) {
    return path.startsWith(folder + QLatin1Char('/'));
}

QString Whence(const QString& from) {
    return QStringLiteral("from \"%1\"").arg(from);
}

/// Whether the service says that this one move is not possible.
bool IsRefused(const HttpException& error) {
    const int status = error.StatusCode();
    return status == HttpStatus::Forbidden || status == HttpStatus::NotFound || status == HttpStatus::Conflict ||
           status == HttpStatus::PreconditionFailed;
}

}  // namespace

void Moves::CarryOut() {
    while (_MoveAFolder()) {
        _report.ThrowIfStopped();
    }
    _MoveFiles();
}

bool Moves::_MoveAFolder() {
    const QList<FolderRecord> folders = _sides.scope.FolderRecords();
    QSet<QString> known;
    bool isAnyGone = false;
    for (const FolderRecord& folder : folders) {
        known.insert(folder.path);
        isAnyGone = isAnyGone || !_snapshot.HasFolder(folder.path) || !_remote.HasFolder(folder.path);
    }
    if (!isAnyGone) {
        return false;
    }
    const QMultiHash<quint64, QString> unknown = _UnknownHere(known, LocalEntry::Kind::Folder);
    return std::any_of(folders.begin(), folders.end(), [&](const FolderRecord& folder) {
        if (!_IsSynced(folder.path, true)) {
            return false;
        }
        Places now;
        now.here = _snapshot.HasFolder(folder.path) ? folder.path : _FolderHere(folder, unknown);
        now.there = _remote.HasFolder(folder.path) ? folder.path : _remote.FolderOfId(folder.itemId);
        const bool isKnownThere = now.there != folder.path && known.contains(now.there);
        return !isKnownThere && _Move(folder.path, now, true);
    });
}

void Moves::_MoveFiles() {
    const QStringList files = _sides.scope.Files();
    QStringList moved;
    for (const QString& path : files) {
        const bool isThere = _remote.HasFile(path);
        if (_snapshot.Has(path, LocalEntry::Kind::File) != isThere || (!isThere && !_remote.IsRefused(path))) {
            moved.append(path);
        }
    }
    if (moved.isEmpty()) {
        return;
    }
    std::sort(moved.begin(), moved.end());
    const QSet<QString> known = SetOf(files);
    const QMultiHash<quint64, QString> unknown = _UnknownHere(known, LocalEntry::Kind::File);
    const QHash<QString, QString> there = _remote.FilesById(known);
    for (const QString& path : moved) {
        _report.ThrowIfStopped();
        const std::optional<FileRecord> record = _sides.records.FindFile(path);
        if (!record || !_IsSynced(path, false)) {
            continue;
        }
        Places now;
        now.here = _snapshot.Has(path, LocalEntry::Kind::File) ? path : _FileHere(*record, unknown);
        now.there = _remote.HasFile(path) ? path : there.value(record->file.itemId);
        _Move(path, now, false);
    }
}

bool Moves::_Move(const QString& path, const Places& now, bool isFolder) {
    const bool isMoved = now.here != path || now.there != path;
    if (!isMoved || now.here.isEmpty() || now.there.isEmpty()) {
        return false;
    }
    // What is left alone is not moved with the folder that it lies in.
    if (isFolder && (_remote.HasRefusedBelow(now.here) || _remote.HasRefusedBelow(now.there))) {
        return false;
    }
    const bool isMovedThere = now.there != path;
    const QString place = isMovedThere ? now.there : now.here;
    const bool isDone =
        now.here == now.there || (isMovedThere ? _MoveHere(now.here, place) : _MoveThere(now.there, place, isFolder));
    if (isDone) {
        RecordDatabase::Transaction transaction(_sides.records);
        _sides.records.MoveTree(path, place, _sides.service.ServerPath(path), _sides.service.ServerPath(place));
        part::LastState::Forget(_sides.records);
        transaction.Commit();
        if (isFolder) {
            _scope.Move(path, place);
        }
        if (isFolder && !isMovedThere) {
            // What somebody deletes in it before it is moved, but after the service was asked for changes, is told by
            // its old path.
            _report.LeaveAllOpen();
        }
    }
    return isDone;
}

bool Moves::_MoveHere(const QString& from, const QString& to) {
    if (_snapshot.entries.contains(to) || IsIn(to, from) || !_HasFoldersHere(to)) {
        return false;
    }
    try {
        if (!_sides.tree.Move(from, to)) {
            return false;
        }
        // The records must not be ahead of the disk.
        _sides.tree.SyncFolder(FolderOf(to));
        _sides.tree.SyncFolder(FolderOf(from));
        _snapshot.Move(from, to);
        // A renaming sets the time of the last change, by which a file is known when it is to be replaced.
        if (const std::optional<LocalEntry> moved = _sides.tree.Look(to)) {
            _snapshot.entries.insert(to, *moved);
        }
    } catch (const LocalError& e) {
        // Another disk is mounted below the folder.
        if (e.Code() != EXDEV) {
            _report.TellFailure(to, std::current_exception());
        }
        return false;
    }
    _report.Tell(SyncEvent::Kind::Moved, to, Whence(from));
    return true;
}

bool Moves::_MoveThere(const QString& from, const QString& to, bool isFolder) {
    const bool isFree = !_remote.HasFile(to) && !_remote.HasFolder(to) && !_remote.IsRefused(to);
    if (!isFree || IsIn(to, from) || !_HasFoldersThere(to)) {
        return false;
    }
    try {
        if (!_sides.options.isDryRun) {
            _RequestMove(from, to, isFolder);
            _report.TellSuccess();
        }
    } catch (const HttpException& e) {
        if (!IsRefused(e)) {
            _report.TellFailure(to, std::current_exception());
        }
        return false;
    } catch (const std::exception&) {
        _report.TellFailure(to, std::current_exception());
        return false;
    }
    // In a trial the service still has it where it was.
    _remote.Move(from, to, _sides.service.ServerPath(from),
                 _sides.service.ServerPath(_sides.options.isDryRun ? from : to));
    _report.Tell(SyncEvent::Kind::MovedThere, to, Whence(from));
    return true;
}

void Moves::_RequestMove(const QString& from, const QString& to, bool isFolder) {
    if (isFolder) {
        _sides.service.folders->MoveFolder(_sides.service.FolderAt(from), _sides.service.FolderAt(to));
    } else {
        _sides.service.moveFile(_sides.service.ServerPath(from), _sides.service.ServerPath(to));
    }
}

bool Moves::_HasFoldersHere(const QString& path) {
    QStringList missing = FoldersAbove(path);
    const auto isHere = [this](const QString& folder) { return _snapshot.HasFolder(folder); };
    missing.erase(std::remove_if(missing.begin(), missing.end(), isHere), missing.end());
    _changes.MakeFolders(missing);
    return _snapshot.HasFolder(FolderOf(path));
}

bool Moves::_HasFoldersThere(const QString& path) {
    QStringList missing = FoldersAbove(path);
    const auto isThere = [this](const QString& folder) { return _remote.HasFolder(folder); };
    missing.erase(std::remove_if(missing.begin(), missing.end(), isThere), missing.end());
    const auto isOther = [this](const QString& folder) { return _remote.HasFile(folder) || _remote.IsRefused(folder); };
    if (std::any_of(missing.begin(), missing.end(), isOther)) {
        return false;
    }
    const QSet<QString> failed = push::Uploader(_sides, _comparison, _maker, _report).MakeFolders(missing);
    for (const QString& folder : missing) {
        if (!failed.contains(folder)) {
            _remote.AddFolder(folder);
        }
    }
    return failed.isEmpty();
}

QString Moves::_FolderHere(const FolderRecord& folder, const QMultiHash<quint64, QString>& unknown) const {
    const auto isSame = [this, &folder](const QString& path) {
        // The number of a folder that was deleted is given to a new one, but not the files that were in it.
        for (const auto& [known, fingerprint] : _sides.records.FingerprintsBelow(folder.path)) {
            const auto entry = _snapshot.entries.find(path + known.mid(folder.path.size()));
            if (entry != _snapshot.entries.end() && entry->fingerprint.IsSameFileAs(fingerprint)) {
                return true;
            }
        }
        return false;
    };
    const QStringList candidates = folder.inode == 0 ? QStringList() : unknown.values(folder.inode);
    const auto found = std::find_if(candidates.begin(), candidates.end(), isSame);
    return found == candidates.end() ? QString() : *found;
}

QString Moves::_FileHere(const FileRecord& record, const QMultiHash<quint64, QString>& unknown) const {
    const auto isSame = [this, &record](const QString& path) {
        LocalFileState file;
        file.entry = _snapshot.entries.value(path);
        if (!file.entry->fingerprint.IsSameFileAs(record.local)) {
            return false;
        }
        _comparison.Read(path, file);
        return file.md5 == record.contentMd5;
    };
    const QStringList candidates = unknown.values(record.local.inode);
    const auto found = std::find_if(candidates.begin(), candidates.end(), isSame);
    return found == candidates.end() ? QString() : *found;
}

QMultiHash<quint64, QString> Moves::_UnknownHere(const QSet<QString>& known, LocalEntry::Kind kind) const {
    QMultiHash<quint64, QString> unknown;
    for (auto entry = _snapshot.entries.begin(); entry != _snapshot.entries.end(); ++entry) {
        if (entry->kind == kind && !known.contains(entry.key())) {
            unknown.insert(entry->fingerprint.inode, entry.key());
        }
    }
    return unknown;
}

bool Moves::_IsSynced(const QString& path, bool isFolder) const {
    const bool isExcluded = isFolder ? _sides.exclusion.HasFolderAt(path) : _sides.exclusion.HasFileAt(path);
    return !isExcluded && !_remote.IsRefused(path);
}

void Moves::RememberFolders() {
    RecordDatabase::Transaction transaction(_sides.records);
    for (const FolderRecord& folder : _sides.scope.FolderRecords()) {
        FolderRecord now = folder;
        if (_snapshot.HasFolder(folder.path)) {
            now.inode = _snapshot.entries.value(folder.path).fingerprint.inode;
        }
        const QString id = _remote.FolderId(folder.path);
        now.itemId = id.isEmpty() ? folder.itemId : id;
        if (now.inode != folder.inode || now.itemId != folder.itemId) {
            _sides.records.WriteFolder(now);
        }
    }
    transaction.Commit();
}

}  // namespace both
}  // namespace ovsync
