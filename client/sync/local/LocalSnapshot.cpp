#include "client/sync/local/LocalSnapshot.h"

#include <algorithm>
#include <cerrno>

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

}  // namespace

bool LocalSnapshot::Has(const QString& path, LocalEntry::Kind kind) const {
    const auto entry = entries.find(path);
    return entry != entries.end() && entry->kind == kind;
}

QStringList LocalSnapshot::Others() const {
    QStringList others;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (entry->kind == LocalEntry::Kind::Other) {
            others.append(entry.key());
        }
    }
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

LocalSnapshot LocalSnapshot::Of(ILocalTree& tree, const Exclusion& exclusion) {
    LocalSnapshot snapshot;
    QStringList folders(QString{});
    while (!folders.isEmpty()) {
        const QString folder = folders.takeLast();
        const QString prefix = folder.isEmpty() ? folder : folder + QLatin1Char('/');
        for (const NamedLocalEntry& entry : ListUnlessClosed(tree, folder, snapshot.closed)) {
            const QString path = prefix + entry.name;
            const bool isFolder = entry.kind == LocalEntry::Kind::Folder;
            if (entry.kind == LocalEntry::Kind::File && entry.isUtf8 && IsTemporaryName(entry.name)) {
                snapshot.temporaryFiles.append(path);
                continue;
            }
            if (entry.name == store::RecordDatabase::HiddenFolder() ||
                (isFolder ? exclusion.HasFolder(path) : exclusion.HasFile(path))) {
                continue;
            }
            const QString reason = entry.isUtf8 ? ReasonAgainst(entry.name) : QStringLiteral("the name is not UTF-8");
            if (!reason.isEmpty()) {
                snapshot.refused.append({SyncEvent::Kind::Refused, path, reason});
                continue;
            }
            snapshot.entries.insert(path, entry);
            if (isFolder) {
                folders.append(path);
            }
        }
    }
    return snapshot;
}

}  // namespace local
}  // namespace ovsync
