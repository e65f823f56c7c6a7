#include "client/sync/local/Installer.h"

#include <atomic>

#include "client/store/StoreError.h"
#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace local {

using report::SyncEvent;
using store::Fingerprint;
using store::Placement;

namespace {

bool IsFile(const std::optional<LocalEntry>& entry) {
    return entry && entry->kind == LocalEntry::Kind::File;
}

bool IsFile(const std::optional<LocalEntry>& entry, const Fingerprint& fingerprint) {
    return IsFile(entry) && entry->fingerprint.IsSameFileAs(fingerprint);
}

QString UnrecordedCopySetting() {
    return QStringLiteral("unrecordedCopy");
}

bool ReplacesSomething(const Placement& placement) {
    return placement.old.size >= 0;
}

QString TimeNote(const QString& what, const Fingerprint& fingerprint) {
    return what + QDateTime::fromMSecsSinceEpoch(fingerprint.modified / 1000000, Qt::UTC)
                      .toString(QStringLiteral(", yyyy-MM-dd HH.mm.ss"));
}

}  // namespace

void Installer::Install(QVector<Request>& requests) {
    _RecordIntentions(requests);
    for (Request& request : requests) {
        _Install(request);
    }
    _SyncFolders(requests);
    store::RecordDatabase::Transaction transaction(_records);
    for (Request& request : requests) {
        const Placement& placement = request.placement;
        if (request.result == Result::Done && placement.isRemoval) {
            _records.ForgetFile(placement.record.path);
        } else if (request.result == Result::Done) {
            _records.WriteFile(placement.record);
        }
        if (request.result != Result::Failed) {
            _records.ForgetPlacement(placement);
        }
    }
    transaction.Commit();
}

void Installer::_RecordIntentions(const QVector<Request>& requests) {
    try {
        store::RecordDatabase::Transaction transaction(_records);
        for (const Request& request : requests) {
            _records.WritePlacement(request.placement);
        }
        transaction.Commit();
    } catch (const store::StoreError&) {
        // Where the disk is full, what came would keep it so.
        for (const Request& request : requests) {
            if (!request.placement.isRemoval) {
                _RemoveUseless(request.placement.temporary);
            }
        }
        throw;
    }
}

void Installer::_RemoveUseless(const QString& temporary) {
    try {
        _tree.Remove(temporary);
    } catch (const LocalError&) {
        // The next pass tries again.
    }
}

void Installer::_SyncFolders(QVector<Request>& requests) {
    QHash<QString, std::exception_ptr> errors;
    for (Request& request : requests) {
        const QString folder = FolderOf(request.placement.record.path);
        if (!errors.contains(folder)) {
            try {
                _tree.SyncFolder(folder);
                errors.insert(folder, nullptr);
            } catch (const LocalError& e) {
                if (e.ConcernsWholeDisk()) {
                    throw;
                }
                errors.insert(folder, std::current_exception());
            }
        }
        // Somebody took the folder away. Whatever was done in it, the next Recover sees what is there.
        if (request.result == Result::Done && errors[folder]) {
            request.result = Result::Failed;
            request.error = errors[folder];
        }
    }
}

void Installer::_Install(Request& request) {
    try {
        request.result = request.placement.isRemoval ? _Remove(request) : _Put(request);
    } catch (const LocalError& e) {
        request.result = Result::Failed;
        request.error = std::current_exception();
        if (e.ConcernsWholeDisk()) {
            throw;
        }
    }
}

Installer::Result Installer::_Put(Request& request) {
    Placement& placement = request.placement;
    const QString& target = placement.record.path;
    const std::optional<LocalEntry> here = ReplacesSomething(placement) ? _tree.Look(target) : std::nullopt;
    if (!here) {
        if (!_tree.Move(placement.temporary, target)) {
            return Result::Occupied;
        }
    } else {
        if (!IsFile(here) || !here->fingerprint.IsUnchangedSince(placement.old)) {
            return Result::Occupied;
        }
        if (_tree.Swap(placement.temporary, target)) {
            if (IsFile(_tree.Look(placement.temporary), placement.old)) {
                _trash.Take(placement.temporary, target);
            } else {
                request.aside = _KeepReplaced(placement.temporary, target);
            }
        } else {
            _trash.Take(target, target);
            if (!_tree.Move(placement.temporary, target)) {
                return Result::Occupied;
            }
        }
    }
    placement.record.local = _Placed(target, placement.record.local);
    return Result::Done;
}

Installer::Result Installer::_Remove(Request& request) {
    const Placement& placement = request.placement;
    const QString& target = placement.record.path;
    const std::optional<LocalEntry> here = _tree.Look(target);
    if (!IsFile(here) || !here->fingerprint.IsUnchangedSince(placement.old) ||
        !_tree.Move(target, placement.temporary)) {
        return Result::Occupied;
    }
    if (IsFile(_tree.Look(placement.temporary), placement.old)) {
        _trash.Take(placement.temporary, target);
        return Result::Done;
    }
    if (!_tree.Move(placement.temporary, target)) {
        request.aside = _KeepReplaced(placement.temporary, target);
    }
    return Result::Occupied;
}

QVector<SyncEvent> Installer::Recover() {
    QVector<SyncEvent> events;
    _RecoverCopy();
    for (const Placement& placement : _records.Placements()) {
        const QString& target = placement.record.path;
        try {
            const QString aside = _Recover(placement);
            if (!aside.isEmpty()) {
                events.append(
                    {SyncEvent::Kind::Conflict, target,
                     QStringLiteral("it was changed here while an earlier pass replaced it: that is in \"%1\"")
                         .arg(aside)});
            }
        } catch (const LocalError& e) {
            if (e.ConcernsWholeDisk()) {
                throw;
            }
            events.append({SyncEvent::Kind::Refused, target,
                           QStringLiteral("what an earlier pass began could not be finished: ") + e.Message()});
        }
        _records.ForgetPlacement(placement);
    }
    return events;
}

QString Installer::_Recover(const Placement& placement) {
    const QString& target = placement.record.path;
    const std::optional<LocalEntry> temporary = _tree.Look(placement.temporary);
    const bool isOldTakenOut = IsFile(temporary, placement.old);
    const bool isPlaced = !placement.isRemoval && IsFile(_tree.Look(target), placement.record.local);
    QString aside;
    if (!temporary) {
        _lost.insert(NameOf(placement.temporary), target);
    } else if (!placement.isRemoval && IsFile(temporary, placement.record.local)) {
        _tree.Remove(placement.temporary);
    } else if (isOldTakenOut && (isPlaced || !_tree.Move(placement.temporary, target))) {
        _trash.Take(placement.temporary, target);
    } else if (!isOldTakenOut && !_tree.Move(placement.temporary, target)) {
        aside = _KeepReplaced(placement.temporary, target);
    }
    if (isPlaced) {
        _tree.SyncFolder(FolderOf(target));
        store::FileRecord record = placement.record;
        record.local = _Placed(target, record.local);
        _records.WriteFile(record);
    }
    return aside;
}

void Installer::ClearUp(const QString& temporary) {
    const auto target = _lost.constFind(NameOf(temporary));
    if (target == _lost.constEnd()) {
        _tree.Remove(temporary);
    } else {
        _trash.Take(temporary, *target);
    }
}

QString Installer::PutBeside(const QString& temporary, store::ConflictCopy copy, const QString& note) {
    copy.copy = _GiveName(temporary, copy.path, note,
                          [this](const QString& name) { _records.WriteSetting(UnrecordedCopySetting(), name); });
    store::RecordDatabase::Transaction transaction(_records);
    _records.WriteCopy(copy);
    _records.WriteSetting(UnrecordedCopySetting(), QString());
    transaction.Commit();
    return copy.copy;
}

void Installer::_RecoverCopy() {
    const QString unrecorded = _records.Setting(UnrecordedCopySetting());
    if (unrecorded.isEmpty()) {
        return;
    }
    try {
        // It comes again: the service has it.
        if (IsFile(_tree.Look(unrecorded))) {
            _trash.Take(unrecorded, unrecorded);
        }
        _records.WriteSetting(UnrecordedCopySetting(), QString());
    } catch (const LocalError& e) {
        if (e.ConcernsWholeDisk()) {
            throw;
        }
        // Perhaps the next pass can.
    }
}

QString Installer::_GiveName(const QString& temporary, const QString& path, const QString& note,
                             const std::function<void(const QString& name)>& onName) {
    for (int number = 1;; ++number) {
        QString beside = PathWithNote(path, note, number);
        const std::optional<LocalEntry> there = _tree.Look(beside);
        if (!there) {
            onName(beside);
        }
        if (!there && _tree.Move(temporary, beside)) {
            _tree.SyncFolder(FolderOf(path));
            return beside;
        }
        if (IsFile(there) && _HasSameContent(temporary, beside)) {
            _tree.Remove(temporary);
            return beside;
        }
    }
}

QString Installer::_KeepReplaced(const QString& temporary, const QString& path) {
    const std::optional<LocalEntry> entry = _tree.Look(temporary);
    return _GiveName(temporary, path,
                     TimeNote(QStringLiteral("changed here"), entry ? entry->fingerprint : Fingerprint()),
                     [](const QString&) {});
}

bool Installer::_HasSameContent(const QString& a, const QString& b) {
    const std::atomic<bool> isStopped(false);
    const std::optional<LocalContent> first = LocalContent::Of(_tree, a, isStopped);
    const std::optional<LocalContent> second = LocalContent::Of(_tree, b, isStopped);
    return first && second && first->md5 == second->md5 && first->fingerprint.size == second->fingerprint.size;
}

Fingerprint Installer::_Placed(const QString& path, const Fingerprint& fresh) {
    const std::optional<LocalEntry> now = _tree.Look(path);
    if (IsFile(now, fresh)) {
        return Recordable(now->fingerprint);
    }
    // Written again already: the record is that of what was put there.
    Fingerprint placed = fresh;
    placed.changed = 0;
    return placed;
}

}  // namespace local
}  // namespace ovsync
