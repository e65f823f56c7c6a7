#include "service/tree/Reconciler.h"

#include <algorithm>

#include "service/protocol/ServerPath.h"

namespace service::tree {
namespace {

bool IsCollection(const store::ContentStore::Entry& entry) {
    return entry.kind == store::ContentStore::Kind::Collection;
}

template <typename Known>
bool HasContentOf(const Known& known, const store::ContentStore::Entry& found) {
    return known.isCollection == IsCollection(found) && known.size == found.size && known.modified == found.modified;
}

// Whether the metadata still describes what is on the disk.
template <typename Known>
bool Describes(const Known& known, const store::ContentStore::Entry& found) {
    return HasContentOf(known, found) && known.isExecutable == found.isExecutable;
}

}  // namespace

void Observe(store::Resource& resource, const store::ContentStore::Entry& found) {
    resource.size = found.size;
    resource.modified = found.modified;
    resource.isExecutable = found.isExecutable;
}

Reconciler::Reconciler(store::ContentStore& content, store::MetadataStore& metadata, store::Clock& clock,
                       ChangeLog& log, const std::string& owner)
    : _content(content), _metadata(metadata), _clock(clock), _log(log), _owner(owner) {}

// Brings the metadata of what is at `path` in line with the disk. Returns whether the list of children changed by it.
// To be called in a transaction.
bool Reconciler::_Adopt(const store::Resource& parent, const std::string& path, std::optional<store::Resource>& known,
                        const store::ContentStore::Entry* found) {
    bool listChanged = false;
    if (known && (found == nullptr || known->isCollection != IsCollection(*found))) {
        _log.AddRemoval({path, known->isCollection, _clock.Now()});
        _metadata.RemoveTree(known->id);
        known.reset();
        listChanged = true;
    }
    if (found == nullptr) {
        return listChanged;
    }
    if (!known) {
        known = store::Resource::New(parent, found->name, _owner, IsCollection(*found), _clock.Now());
        Observe(*known, *found);
        _metadata.Insert(*known);
        return true;
    }
    _Refresh(*known, *found);
    return listChanged;
}

void Reconciler::_Refresh(store::Resource& known, const store::ContentStore::Entry& found) {
    if (!HasContentOf(known, found)) {
        known.version += known.isCollection ? 0 : 1;
        known.md5.clear();
    }
    known.changed = _clock.Now();
    Observe(known, found);
    _metadata.Update(known);
}

void Reconciler::ChildrenChanged(store::Resource& parent, const std::string& path) {
    parent.changed = _clock.Now();
    if (const auto found = _content.Find(path)) {
        Observe(parent, *found);
    }
    _metadata.UpdateTimes(parent);
}

std::optional<store::Resource> Reconciler::Child(store::Resource& parent, const std::string& path) {
    auto known = _metadata.Child(parent.id, protocol::LastSegment(path));
    auto found = _content.Find(path);
    if (found && found->kind == store::ContentStore::Kind::Other) {
        found.reset();
    }
    if (known.has_value() != found.has_value() || (known && !Describes(*known, *found))) {
        store::MetadataStore::Transaction transaction(_metadata);
        if (_Adopt(parent, path, known, found ? &*found : nullptr)) {
            ChildrenChanged(parent, protocol::ParentPath(path));
        }
        transaction.Commit();
    }
    return known;
}

// Calls `take` with each row, each entry of the disk, or both where they have the same name, and with what adopts a
// child whose metadata is another one.
template <typename Row, typename Take>
void Reconciler::_Compare(std::vector<Row> known, store::Resource& parent, const std::string& path, Take take) {
    // A folder that has just been taken away lists nothing; its own collection notices it the next time.
    const auto entries = _content.List(path).value_or(std::vector<store::ContentStore::Entry>());
    std::optional<store::MetadataStore::Transaction> transaction;
    bool listChanged = false;
    const auto adopt = [&](std::optional<store::Resource>& child, const store::ContentStore::Entry* found) {
        if (!transaction) {
            transaction.emplace(_metadata);
        }
        const std::string childPath = protocol::ChildPath(path, child ? child->name : found->name);
        listChanged = _Adopt(parent, childPath, child, found) || listChanged;
    };
    auto row = known.begin();
    auto entry = entries.begin();
    while (row != known.end() || entry != entries.end()) {
        const bool hasRow = row != known.end() && (entry == entries.end() || row->name <= entry->name);
        const bool hasEntry = entry != entries.end() && (row == known.end() || entry->name <= row->name);
        Row* const taken = hasRow ? &*row++ : nullptr;
        take(taken, hasEntry ? &*entry++ : nullptr, adopt);
    }
    if (listChanged) {
        ChildrenChanged(parent, path);
    }
    if (transaction) {
        transaction->Commit();
    }
}

std::vector<store::Resource> Reconciler::Children(store::Resource& parent, const std::string& path) {
    std::vector<store::Resource> children;
    const auto take = [&](store::Resource* row, const store::ContentStore::Entry* found, const auto& adopt) {
        std::optional<store::Resource> child;
        if (row != nullptr) {
            child = std::move(*row);
        }
        if (!child || found == nullptr || !Describes(*child, *found)) {
            adopt(child, found);
        }
        if (child) {
            children.push_back(std::move(*child));
        }
    };
    _Compare(_metadata.Children(parent.id), parent, path, take);
    return children;
}

std::vector<store::Resource> Reconciler::CollectionsAndChanged(store::Resource& parent, const std::string& path,
                                                               std::int64_t since) {
    std::vector<store::Resource> children;
    const auto take = [&](store::KnownChild* row, const store::ContentStore::Entry* found, const auto& adopt) {
        const bool isKnown = row != nullptr && found != nullptr && Describes(*row, *found);
        if (isKnown && !row->isCollection && row->changed <= since) {
            return;
        }
        std::optional<store::Resource> child = row != nullptr ? _metadata.ById(row->id) : std::nullopt;
        if (!isKnown) {
            adopt(child, found);
        }
        if (child && (child->isCollection || child->changed > since)) {
            children.push_back(std::move(*child));
        }
    };
    _Compare(_metadata.KnownChildren(parent.id), parent, path, take);
    return children;
}

store::Resource Reconciler::_Root() {
    store::Resource root = _metadata.Root();
    const auto found = _content.Find("");
    if (found && !Describes(root, *found)) {
        _Refresh(root, *found);
    }
    return root;
}

std::optional<store::Resource> Reconciler::Find(const std::string& path) {
    std::optional<store::Resource> resource = _Root();
    for (std::size_t end = 0; resource && end < path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        resource = resource->isCollection ? Child(*resource, path.substr(0, end)) : std::nullopt;
    }
    return resource;
}

}  // namespace service::tree
