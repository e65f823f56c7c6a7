#include "client/sync/local/DryRunTree.h"

#include <algorithm>
#include <cerrno>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace local {

QVector<NamedLocalEntry> DryRunTree::List(const QString& folder) {
    const QString prefix = folder.isEmpty() ? folder : folder + QLatin1Char('/');
    QVector<NamedLocalEntry> entries;
    const auto change = _changes.find(folder);
    if (change == _changes.end()) {
        entries = _tree.List(folder);
        const auto isChanged = [this, &prefix](const NamedLocalEntry& entry) {
            return _changes.count(prefix + entry.name) != 0;
        };
        entries.erase(std::remove_if(entries.begin(), entries.end(), isChanged), entries.end());
    } else if (!change->second) {
        throw LocalError(folder, ENOENT);
    } else if (change->second->entry.kind != LocalEntry::Kind::Folder) {
        throw LocalError(folder, ENOTDIR);
    }
    for (auto below = _changes.upper_bound(prefix); below != _changes.end() && below->first.startsWith(prefix);
         ++below) {
        if (below->second && FolderOf(below->first) == folder) {
            NamedLocalEntry entry;
            static_cast<LocalEntry&>(entry) = below->second->entry;
            entry.name = NameOf(below->first);
            entries.append(entry);
        }
    }
    return entries;
}

std::optional<LocalEntry> DryRunTree::Look(const QString& path) {
    const auto change = _changes.find(path);
    if (change == _changes.end()) {
        return _tree.Look(path);
    }
    return change->second ? std::make_optional(change->second->entry) : std::nullopt;
}

std::unique_ptr<IReadableFile> DryRunTree::Open(const QString& path) {
    const auto change = _changes.find(path);
    if (change == _changes.end()) {
        return _tree.Open(path);
    }
    if (!change->second) {
        throw LocalError(path, ENOENT);
    }
    return _tree.Open(change->second->origin);
}

std::unique_ptr<IWritableFile> DryRunTree::Create(const QString& path) {
    throw LocalError(path, EROFS);
}

std::unique_ptr<IWritableFile> DryRunTree::Reopen(const QString& path) {
    throw LocalError(path, EROFS);
}

void DryRunTree::MakeFolder(const QString& path) {
    if (Look(path)) {
        throw LocalError(path, EEXIST);
    }
    LocalEntry folder;
    folder.kind = LocalEntry::Kind::Folder;
    _changes[path] = Moved{folder, QString()};
}

bool DryRunTree::Move(const QString& from, const QString& to) {
    const std::optional<LocalEntry> entry = Look(from);
    if (!entry) {
        throw LocalError(from, ENOENT);
    }
    if (Look(to)) {
        return false;
    }
    const auto change = _changes.find(from);
    _changes[to] = Moved{*entry, change == _changes.end() ? from : change->second->origin};
    if (entry->kind == LocalEntry::Kind::Folder) {
        for (const NamedLocalEntry& below : List(from)) {
            Move(from + QLatin1Char('/') + below.name, to + QLatin1Char('/') + below.name);
        }
    }
    _changes[from] = std::nullopt;
    return true;
}

bool DryRunTree::Swap(const QString& /*a*/, const QString& /*b*/) {
    // As on a file system that cannot do it: what swaps has another way.
    return false;
}

void DryRunTree::Remove(const QString& path) {
    _changes[path] = std::nullopt;
}

bool DryRunTree::RemoveFolder(const QString& path) {
    if (!List(path).isEmpty()) {
        return false;
    }
    _changes[path] = std::nullopt;
    return true;
}

void DryRunTree::SyncFolder(const QString& /*folder*/) {}

void DryRunTree::SyncAll() {}

}  // namespace local
}  // namespace ovsync
