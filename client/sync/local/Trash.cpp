#include "client/sync/local/Trash.h"

#include <QStringList>
#include <algorithm>
#include <cerrno>

#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace local {

using report::SyncEvent;

namespace {

QString TrashFolder() {
    return store::RecordDatabase::HiddenFolder() + QStringLiteral("/trash");
}

QString FolderOfPass(const TrashTime& pass) {
    return TrashFolder() + QLatin1Char('/') + pass.FolderName();
}

QString PlaceOf(const TrashTime& pass, const QString& path) {
    return FolderOfPass(pass) + QLatin1Char('/') + path;
}

}  // namespace

void Trash::Take(const QString& file, const QString& path) {
    if (_days == 0) {
        _tree.Remove(file);
        return;
    }
    TrashTime pass{_now, 1};
    // A pass can take the same path twice, as a file and as a folder, and two passes can begin within one second.
    while (!_TakeInto(FolderOfPass(pass), file, path)) {
        ++pass.number;
    }
}

bool Trash::_TakeInto(const QString& folder, const QString& file, const QString& path) {
    const QString place = folder + QLatin1Char('/') + path;
    const QString inTheWay = _MakeFolders(FolderOf(place));
    if (!inTheWay.isEmpty()) {
        // Another number would only help below the trash.
        if (!inTheWay.startsWith(TrashFolder() + QLatin1Char('/'))) {
            throw LocalError(inTheWay, ENOTDIR);
        }
        return false;
    }
    try {
        return _tree.Move(file, place);
    } catch (const LocalError& e) {
        // Another disk is mounted below the folder. To copy what is kept could take more space than there is.
        if (e.Code() != EXDEV) {
            throw;
        }
        _tree.Remove(file);
        return true;
    }
}

QString Trash::_MakeFolders(const QString& path) {
    if (const std::optional<LocalEntry> there = _tree.Look(path)) {
        return there->kind == LocalEntry::Kind::Folder ? QString() : path;
    }
    QString inTheWay = _MakeFolders(FolderOf(path));
    if (inTheWay.isEmpty()) {
        _tree.MakeFolder(path);
    }
    return inTheWay;
}

QVector<TrashTime> Trash::_Passes() {
    QVector<TrashTime> passes;
    if (!_tree.Look(TrashFolder())) {
        return passes;
    }
    for (const NamedLocalEntry& entry : _tree.List(TrashFolder())) {
        const std::optional<TrashTime> pass = TrashTime::FromFolderName(entry.name);
        if (pass && entry.kind == LocalEntry::Kind::Folder) {
            passes.append(*pass);
        }
    }
    std::sort(passes.begin(), passes.end());
    return passes;
}

QVector<TrashEntry> Trash::Entries() {
    QVector<TrashEntry> entries;
    for (const TrashTime& pass : _Passes()) {
        const int first = entries.size();
        _AddEntries(pass, entries);
        std::sort(entries.begin() + first, entries.end(),
                  [](const TrashEntry& a, const TrashEntry& b) { return a.path < b.path; });
    }
    return entries;
}

void Trash::_AddEntries(const TrashTime& pass, QVector<TrashEntry>& entries) {
    QStringList prefixes(QString{});
    while (!prefixes.isEmpty()) {
        const QString prefix = prefixes.takeLast();
        for (const NamedLocalEntry& entry : _ListUnlessGone(PlaceOf(pass, prefix))) {
            const QString path = prefix + entry.name;
            if (entry.kind == LocalEntry::Kind::Folder) {
                prefixes.append(path + QLatin1Char('/'));
            } else if (entry.kind == LocalEntry::Kind::File && entry.isUtf8) {
                entries.append({pass, path, entry.fingerprint.size});
            }
        }
    }
}

QVector<NamedLocalEntry> Trash::_ListUnlessGone(const QString& folder) {
    try {
        return _tree.List(folder);
    } catch (const LocalError& e) {
        if (e.Code() == ENOENT) {
            return {};
        }
        throw;
    }
}

std::optional<TrashEntry> Trash::Find(const QString& path, const std::optional<TrashTime>& from) {
    if (!ReasonAgainstPath(path).isEmpty()) {
        return std::nullopt;
    }
    const QVector<TrashTime> passes = _Passes();
    for (auto pass = passes.crbegin(); pass != passes.crend(); ++pass) {
        if (from && !(*pass == *from)) {
            continue;
        }
        const std::optional<LocalEntry> entry = _tree.Look(PlaceOf(*pass, path));
        if (entry && entry->kind == LocalEntry::Kind::File) {
            return TrashEntry{*pass, path, entry->fingerprint.size};
        }
    }
    return std::nullopt;
}

QString Trash::Restore(const TrashEntry& entry, const QString& path) {
    const QString place = PlaceOf(entry.from, entry.path);
    if (_tree.Look(path)) {
        return path;
    }
    QString inTheWay = _MakeFolders(FolderOf(path));
    if (!inTheWay.isEmpty()) {
        return inTheWay;
    }
    if (!_tree.Move(place, path)) {
        return path;
    }
    _tree.SyncFolder(FolderOf(path));
    try {
        QString folder = FolderOf(place);
        while (folder != TrashFolder() && _tree.RemoveFolder(folder)) {
            folder = FolderOf(folder);
        }
    } catch (const LocalError&) {
        // The file is back. An empty folder that stays goes when its time has come.
    }
    return QString();
}

QVector<SyncEvent> Trash::RemoveOld() {
    const QDateTime limit = _now.addDays(-_days);
    return _Remove([&limit](const TrashTime& pass) { return pass.time < limit; });
}

QVector<SyncEvent> Trash::RemoveAll() {
    return _Remove([](const TrashTime& /*pass*/) { return true; });
}

QVector<SyncEvent> Trash::_Remove(const std::function<bool(const TrashTime&)>& goes) {
    QVector<SyncEvent> failures;
    const auto tell = [&failures](const QString& folder, const QString& reason) {
        failures.append({SyncEvent::Kind::Refused, folder, QStringLiteral("it cannot be removed: ") + reason});
    };
    try {
        for (const TrashTime& pass : _Passes()) {
            const QString folder = FolderOfPass(pass);
            const QString reason = goes(pass) ? _RemoveWithContent(folder) : QString();
            if (!reason.isEmpty()) {
                tell(folder, reason);
            }
        }
    } catch (const LocalError& e) {
        tell(TrashFolder(), e.Message());
    }
    return failures;
}

QString Trash::_RemoveWithContent(const QString& folder) {
    QString reason;
    const auto attempt = [&reason](const std::function<void()>& removal) {
        try {
            removal();
        } catch (const LocalError& e) {
            reason = reason.isEmpty() ? e.Message() : reason;
        }
    };
    QStringList folders(folder);
    for (int i = 0; i < folders.size(); ++i) {
        attempt([this, &folders, &attempt, above = folders[i]] {
            for (const NamedLocalEntry& entry : _tree.List(above)) {
                const QString path = above + QLatin1Char('/') + entry.name;
                if (entry.kind == LocalEntry::Kind::Folder) {
                    folders.append(path);
                } else {
                    attempt([this, &path] { _tree.Remove(path); });
                }
            }
        });
    }
    std::for_each(folders.crbegin(), folders.crend(), [this, &attempt](const QString& emptied) {
        attempt([this, &emptied] {
            if (!_tree.RemoveFolder(emptied)) {
                throw LocalError(emptied, ENOTEMPTY);
            }
        });
    });
    return reason;
}

}  // namespace local
}  // namespace ovsync
