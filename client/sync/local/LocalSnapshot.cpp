#include "client/sync/local/LocalSnapshot.h"

#include <algorithm>
#include <cerrno>
#include <future>
#include <utility>
#include <vector>

#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace local {

using report::SyncEvent;

namespace {

QVector<NamedLocalEntry> ListUnlessGone(ILocalTree& tree, const QString& folder) {
    try {
        return tree.List(folder);
    } catch (const LocalError& e) {
        if (!folder.isEmpty() && (e.Code() == ENOENT || e.Code() == ENOTDIR)) {
            return {};
        }
        throw;
    }
}

bool IsSyncedFolder(const QVector<NamedLocalEntry>& entries) {
    return std::any_of(entries.begin(), entries.end(), [](const NamedLocalEntry& entry) {
        return entry.name == store::RecordDatabase::HiddenFolder() && entry.kind == LocalEntry::Kind::Folder;
    });
}

// What is listed of so many is kept until it is sorted.
const int FoldersAtOnce = 50;
// For fewer, a thread takes longer than they do.
const int LeastFolders = 10;

/// What lies in the folder; none, and the reason in `closed`, when it is to be left alone.
QVector<NamedLocalEntry> ListUnlessClosed(ILocalTree& tree, const QString& folder, QVector<SyncEvent>& closed) {
    try {
        QVector<NamedLocalEntry> entries = ListUnlessGone(tree, folder);
        if (folder.isEmpty() || !IsSyncedFolder(entries)) {
            return entries;
        }
        closed.append({SyncEvent::Kind::Refused, folder,
                       QStringLiteral("it is a synced folder of its own and left alone; --exclude it, or remove the "
                                      "hidden folder \"%1\" in it")
                           .arg(store::RecordDatabase::HiddenFolder())});
    } catch (const LocalError& e) {
        if (folder.isEmpty() || e.ConcernsWholeDisk()) {
            throw;
        }
        closed.append({SyncEvent::Kind::Refused, folder, QStringLiteral("it cannot be read: ") + e.Message()});
    }
    return {};
}

/// Looks at what lies here, and sorts it.
class SnapshotMaker {
public:
    SnapshotMaker(ILocalTree& tree, const Exclusion& exclusion) : _tree(tree), _exclusion(exclusion) {}

    LocalSnapshot Made() { return std::move(_snapshot); }

    /// Another thread lists the larger part: what is listed is sorted by this one alone.
    void AddBelow(const QString& top) {
        QStringList folders(top);
        while (!folders.isEmpty()) {
            QStringList own = folders.mid(qMax(0, folders.size() - FoldersAtOnce));
            folders.erase(folders.end() - own.size(), folders.end());
            const QStringList others = own.size() < LeastFolders ? QStringList() : own.mid(own.size() * 2 / 5);
            own.erase(own.end() - others.size(), own.end());
            auto listing = std::async(others.isEmpty() ? std::launch::deferred : std::launch::async,
                                      [this, &others] { return _ListAll(others); });
            for (const QString& folder : qAsConst(own)) {
                _AddAll(_List(folder), folders);
            }
            for (const Listed& listed : listing.get()) {
                _AddAll(listed, folders);
            }
        }
    }

    /// What lies in the same folder as something that was added before, if it is one.
    void AddPlace(const QString& path, bool isWhole) {
        if (_snapshot.entries.contains(path) || !_snapshot.HasFolder(FolderOf(path)) || _IsClosed(FolderOf(path))) {
            return;
        }
        NamedLocalEntry entry;
        if (!_Look(path, entry) || !_Add(path, entry) || entry.kind != LocalEntry::Kind::Folder) {
            return;
        }
        NamedLocalEntry hidden;
        if (isWhole) {
            AddBelow(path);
        } else if (_Look(path + QLatin1Char('/') + store::RecordDatabase::HiddenFolder(), hidden)) {
            ListUnlessClosed(_tree, path, _snapshot.closed);
        }
    }

private:
    struct Listed {
        QString folder;
        QVector<NamedLocalEntry> entries;
        QVector<SyncEvent> closed;
    };

    Listed _List(const QString& folder) const {
        Listed listed;
        listed.folder = folder;
        listed.entries = ListUnlessClosed(_tree, folder, listed.closed);
        return listed;
    }

    std::vector<Listed> _ListAll(const QStringList& folders) const {
        std::vector<Listed> all;
        for (const QString& folder : folders) {
            all.push_back(_List(folder));
        }
        return all;
    }

    /// Those of its folders that are to be listed are added to `folders`.
    void _AddAll(const Listed& listed, QStringList& folders) {
        _snapshot.closed += listed.closed;
        const QString prefix = listed.folder.isEmpty() ? QString() : listed.folder + QLatin1Char('/');
        for (const NamedLocalEntry& entry : listed.entries) {
            const QString path = prefix + entry.name;
            if (_Add(path, entry) && entry.kind == LocalEntry::Kind::Folder) {
                folders.append(path);
            }
        }
    }

    bool _IsClosed(const QString& folder) const {
        return std::any_of(_snapshot.closed.begin(), _snapshot.closed.end(),
                           [&folder](const SyncEvent& closed) { return closed.path == folder; });
    }

    bool _Look(const QString& path, NamedLocalEntry& entry) {
        try {
            const std::optional<LocalEntry> found = _tree.Look(path);
            static_cast<LocalEntry&>(entry) = found.value_or(LocalEntry());
            entry.name = NameOf(path);
            return found.has_value();
        } catch (const LocalError& e) {
            if (e.ConcernsWholeDisk()) {
                throw;
            }
            // The reason is that of the folder.
            ListUnlessClosed(_tree, FolderOf(path), _snapshot.closed);
            if (!_IsClosed(FolderOf(path))) {
                throw;
            }
            return false;
        }
    }

    /// False when it is left alone.
    bool _Add(const QString& path, const NamedLocalEntry& entry) {
        if (entry.kind == LocalEntry::Kind::File && entry.isUtf8 && IsTemporaryName(entry.name)) {
            _snapshot.temporaryFiles.append(path);
            return false;
        }
        const bool isFolder = entry.kind == LocalEntry::Kind::Folder;
        if (entry.name == store::RecordDatabase::HiddenFolder() ||
            (isFolder ? _exclusion.HasFolder(path) : _exclusion.HasFile(path))) {
            return false;
        }
        const QString reason = entry.isUtf8 ? ReasonAgainst(entry.name) : QStringLiteral("the name is not UTF-8");
        if (!reason.isEmpty()) {
            _snapshot.refused.append({SyncEvent::Kind::Refused, path, reason + QStringLiteral("; rename it")});
            return false;
        }
        _snapshot.entries.insert(path, entry);
        _snapshot.hasOthers = _snapshot.hasOthers || entry.kind == LocalEntry::Kind::Other;
        return true;
    }

    ILocalTree& _tree;
    const Exclusion& _exclusion;
    LocalSnapshot _snapshot;
};

}  // namespace

bool LocalSnapshot::Has(const QString& path, LocalEntry::Kind kind) const {
    const auto entry = entries.find(path);
    return entry != entries.end() && entry->kind == kind;
}

QStringList LocalSnapshot::Others() const {
    QStringList others;
    if (!hasOthers) {
        return others;
    }
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (entry->kind == LocalEntry::Kind::Other) {
            others.append(entry.key());
        }
    }
    std::sort(others.begin(), others.end());
    return others;
}

void LocalSnapshot::Move(const QString& from, const QString& to) {
    if (entries.value(from).kind == LocalEntry::Kind::Folder) {
        const QString below = from + QLatin1Char('/');
        for (const QString& path : entries.keys()) {
            if (path.startsWith(below)) {
                entries.insert(to + path.mid(from.size()), entries.take(path));
            }
        }
    }
    entries.insert(to, entries.take(from));
}

LocalSnapshot LocalSnapshot::Of(const QSet<QString>& places) const {
    LocalSnapshot part;
    part.refused = refused;
    part.closed = closed;
    part.hasOthers = hasOthers;
    for (const QString& path : places) {
        const auto entry = entries.find(path);
        if (entry != entries.end()) {
            part.entries.insert(path, *entry);
        }
    }
    return part;
}

LocalSnapshot LocalSnapshot::Of(ILocalTree& tree, const Exclusion& exclusion) {
    SnapshotMaker maker(tree, exclusion);
    maker.AddBelow(QString());
    return maker.Made();
}

LocalSnapshot LocalSnapshot::OfPlaces(ILocalTree& tree, const Exclusion& exclusion, const QSet<QString>& places,
                                      const QSet<QString>& whole) {
    SnapshotMaker maker(tree, exclusion);
    QStringList paths = places.values();
    std::sort(paths.begin(), paths.end());
    for (const QString& path : paths) {
        maker.AddPlace(path, whole.contains(path));
    }
    return maker.Made();
}

}  // namespace local
}  // namespace ovsync
