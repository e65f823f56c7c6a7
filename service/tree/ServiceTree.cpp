#include "service/tree/ServiceTree.h"

#include <map>
#include <set>

#include "service/protocol/HttpError.h"
#include "service/protocol/ServerPath.h"
#include "service/protocol/XmlText.h"
#include "service/tree/LiveProperty.h"

namespace service::tree {
namespace {

void Observe(store::Resource& resource, const store::UploadFile& upload) {
    resource.size = upload.Size();
    resource.modified = upload.Modified();
    resource.md5 = upload.Checksum();
}

}  // namespace

// For what has to work on a full disk.
template <typename Operation>
auto ServiceTree::_WithSpace(Operation operation) {
    return store::WithSpace(operation, [this](int calls) {
        if (calls > 0 && !_reserve.Release()) {
            return false;
        }
        try {
            _metadata.RecycleSpace();
        } catch (const std::system_error&) {
            // That takes space, too, when the metadata has grown.
        }
        return true;
    });
}

ServiceTree::ServiceTree(const std::string& directory, const std::string& owner)
    : _content(directory),
      _reserve(_content.OwnFile("reserve")),
      _metadata(
          store::WithSpace([&] { return store::MetadataStore(_content.OwnFile("metadata.db"), owner, _clock.Now()); },
                           [this](int /*calls*/) { return _reserve.Release(); })),
      _reconciler(_content, _metadata, _clock, _log, owner) {
    _WithSpace([this] {
        _content.Undo(_metadata.Journal());
        _metadata.ClearJournal();
    });
    _content.ClearWork();
    _reserve.Fill();
    _clock.NotBefore(_metadata.LastChange());
}

// Makes the change of the names on the disk and of the metadata one. The journal is on the disk before the first
// rename and is forgotten in the transaction of the metadata, so whoever finds it after a crash undoes the renames.
void ServiceTree::_Change(std::vector<store::Rename> steps, const std::function<void()>& changeMetadata) {
    for (store::Rename& step : steps) {
        const auto entry = _content.Find(step.source);
        if (!entry) {
            throw protocol::HttpError(409, "'" + step.source + "' was taken away meanwhile");
        }
        step.inode = entry->inode;
    }
    _metadata.WriteJournal(steps);
    try {
        store::MetadataStore::Transaction transaction(_metadata);
        _content.Apply(steps);
        changeMetadata();
        _metadata.ClearJournal();
        transaction.Commit();
    } catch (...) {
        _content.Undo(steps);
        _metadata.ClearJournal();
        throw;
    }
}

std::string ServiceTree::_PathOf(const store::Resource& resource) {
    std::string path;
    for (auto step = std::optional(resource); step && step->parent != 0; step = _metadata.ById(step->parent)) {
        path = path.empty() ? step->name : protocol::ChildPath(step->name, path);
    }
    return path;
}

// The server path of `address`; nothing when it begins in a folder that is not there.
std::optional<std::string> ServiceTree::_Path(const protocol::Address& address) {
    if (!address.folder) {
        return address.path;
    }
    const auto folder = _metadata.ByItemId(*address.folder);
    std::string path = folder ? _PathOf(*folder) : "";
    // People may have taken it away.
    const auto found = folder && folder->isCollection ? _reconciler.Find(path) : std::nullopt;
    if (!found || found->id != folder->id) {
        return std::nullopt;
    }
    if (!address.path.empty()) {
        path = protocol::ChildPath(path, address.path);
    }
    if (protocol::IsReserved(path)) {
        throw protocol::HttpError(403, "'" + path + "' belongs to the service itself");
    }
    return path;
}

std::string ServiceTree::_ExistingPath(const protocol::Address& address) {
    const auto path = _Path(address);
    if (!path) {
        throw protocol::HttpError(404, "There is no folder with this id");
    }
    return *path;
}

store::Resource ServiceTree::_Existing(const std::string& path) {
    auto resource = _reconciler.Find(path);
    if (!resource) {
        throw protocol::HttpError(404, "There is no resource at '" + path + "'");
    }
    return *resource;
}

store::Resource ServiceTree::_ParentOfNew(const std::string& path) {
    auto parent = _reconciler.Find(protocol::ParentPath(path));
    if (!parent || !parent->isCollection) {
        throw protocol::HttpError(409, "There is no collection at '" + protocol::ParentPath(path) + "'");
    }
    return *parent;
}

// Symbolic links and the like are no resources, but the service does not overwrite what people put there.
void ServiceTree::_RefuseOccupied(const std::string& path) const {
    const auto entry = _content.Find(path);
    if (entry && entry->kind == store::ContentStore::Kind::Other) {
        throw protocol::HttpError(403, "What has the name '" + path + "' on the disk is neither a file nor a folder");
    }
}

void ServiceTree::_Check(const Preconditions& preconditions, const std::string& path,
                         const std::optional<store::Resource>& resource) {
    preconditions.Check(path, resource, [this](const std::string& other) { return _reconciler.Find(other); });
}

Listing ServiceTree::_List(const std::string& path, const store::Resource& resource, protocol::Request::Depth depth,
                           const store::Interruption& isInterrupted) {
    Listing listing;
    listing.entries.push_back({path, resource, {}});
    for (std::size_t i = 0; i < listing.entries.size(); ++i) {
        store::ThrowIf(isInterrupted);
        const bool descend =
            depth == protocol::Request::Depth::Infinity || (depth == protocol::Request::Depth::One && i == 0);
        if (descend && listing.entries[i].resource.isCollection) {
            const std::string parentPath = listing.entries[i].path;
            for (store::Resource& child : _reconciler.Children(listing.entries[i].resource, parentPath)) {
                std::string childPath = protocol::ChildPath(parentPath, child.name);
                listing.entries.push_back({std::move(childPath), std::move(child), {}});
            }
        }
        listing.lastChange = std::max(listing.lastChange, listing.entries[i].resource.changed);
    }
    return listing;
}

Listing ServiceTree::List(const protocol::Address& address, protocol::Request::Depth depth, Extras wanted,
                          const store::Interruption& isInterrupted) {
    const std::lock_guard lock(_mutex);
    return _WithSpace([&] {
        const std::string path = _ExistingPath(address);
        Listing listing = _List(path, _Existing(path), depth, isInterrupted);
        if (wanted.hasDeadProperties) {
            _AddDeadProperties(listing.entries);
        }
        if (wanted.hasSyncToken) {
            const std::string token = _SyncToken();
            for (Listing::Entry& entry : listing.entries) {
                entry.resource.syncToken = entry.resource.isCollection ? token : "";
            }
        }
        return listing;
    });
}

void ServiceTree::_AddDeadProperties(std::vector<Listing::Entry>& entries) {
    for (Listing::Entry& entry : entries) {
        entry.deadProperties = _metadata.DeadProperties(entry.resource.id);
    }
}

Changes ServiceTree::ListChanges(const std::string& path, protocol::Request::Depth depth, const std::string& token,
                                 bool wantsDeadProperties, const store::Interruption& isInterrupted) {
    const std::lock_guard lock(_mutex);
    return _WithSpace([&] {
        const store::Resource collection = _Existing(path);
        if (!collection.isCollection) {
            throw protocol::HttpError(403, "Only collections have changes to report");
        }
        const bool isFirst = token.empty();
        const std::int64_t since = isFirst ? 0 : _log.TimeOf(token);
        // A token from the time to come would hide all changes until then.
        if (since > _LastChange()) {
            throw InvalidSyncToken(token);
        }
        Changes changes;
        changes.entries = _ListChanged(path, collection, depth, isFirst ? -1 : since, isInterrupted);
        // What came back has changed.
        std::set<std::string> present;
        for (const Listing::Entry& entry : changes.entries) {
            present.insert(entry.path);
        }
        if (wantsDeadProperties) {
            _AddDeadProperties(changes.entries);
        }
        if (!isFirst) {
            changes.removals = _Removals(since, path, depth, present, token);
        }
        changes.token = _SyncToken();
        return changes;
    });
}

// Stands for everything that has been noticed up to now, and stays the same until the next change is.
std::vector<Listing::Entry> ServiceTree::_ListChanged(const std::string& path, const store::Resource& collection,
                                                      protocol::Request::Depth depth, std::int64_t since,
                                                      const store::Interruption& isInterrupted) {
    std::vector<Listing::Entry> changed;
    std::vector<Listing::Entry> collections{{path, collection, {}}};
    for (std::size_t i = 0; i < collections.size(); ++i) {
        store::ThrowIf(isInterrupted);
        if (i == 0 || depth == protocol::Request::Depth::Infinity) {
            const std::string parentPath = collections[i].path;
            for (store::Resource& child :
                 _reconciler.CollectionsAndChanged(collections[i].resource, parentPath, since)) {
                std::vector<Listing::Entry>& list = child.isCollection ? collections : changed;
                list.push_back({protocol::ChildPath(parentPath, child.name), std::move(child), {}});
            }
        }
        // Only now: to notice a child by hand is a change.
        if (i > 0 && collections[i].resource.changed > since) {
            changed.push_back(collections[i]);
        }
    }
    return changed;
}

std::int64_t ServiceTree::_LastChange() {
    return std::max(_metadata.LastChange(), _log.LastRemoval());
}

std::string ServiceTree::_SyncToken() {
    const std::int64_t last = _LastChange();
    // So the time alone says on which side of the token a change lies.
    _clock.NotBefore(last + 1);
    return _log.TokenAt(last);
}

// What was removed from `path` after `since` and has not come back, `present` being what is there.
std::vector<ChangeLog::Removal> ServiceTree::_Removals(std::int64_t since, const std::string& path,
                                                       protocol::Request::Depth depth,
                                                       const std::set<std::string>& present, const std::string& token) {
    std::vector<ChangeLog::Removal> gone;
    for (ChangeLog::Removal& removal : _log.RemovalsSince(since)) {
        // Of what was in a collection whose place another one has taken, the log says nothing.
        if (protocol::IsWithin(path, removal.path) || (removal.isCollection && present.count(removal.path) != 0)) {
            throw InvalidSyncToken(token);
        }
        const bool isInScope = depth == protocol::Request::Depth::One ? protocol::ParentPath(removal.path) == path
                                                                      : protocol::IsWithin(removal.path, path);
        if (isInScope && present.count(removal.path) == 0) {
            gone.push_back(std::move(removal));
        }
    }
    return gone;
}

ServiceTree::Opened ServiceTree::Open(const std::string& path, const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    return _WithSpace([&] {
        store::Resource resource = _Existing(path);
        _Check(preconditions, path, resource);
        return Opened{resource, resource.isCollection ? store::FileDescriptor() : _content.Open(path)};
    });
}

std::optional<store::ContentStore::OpenFile> ServiceTree::OpenSyncConfiguration() const {
    return _content.OpenOwn("sync-config.xml");
}

std::unique_ptr<store::UploadFile> ServiceTree::NewUpload() {
    return _content.MakeFile(_content.WorkPath());
}

ServiceTree::Stored ServiceTree::Put(const std::string& path, store::UploadFile& upload,
                                     const FileAttributes& attributes, const std::string& user,
                                     const Preconditions& preconditions) {
    if (attributes.modified) {
        upload.SetModified(*attributes.modified);
    }
    if (attributes.isExecutable) {
        upload.SetExecutable(*attributes.isExecutable);
    }
    upload.Sync();
    upload.Finish();
    const std::lock_guard lock(_mutex);
    if (path.empty()) {
        throw protocol::HttpError(405, "The root is a collection");
    }
    store::Resource parent = _ParentOfNew(path);
    const auto existing = _reconciler.Child(parent, path);
    if (existing && existing->isCollection) {
        throw protocol::HttpError(405, "'" + path + "' is a collection");
    }
    _RefuseOccupied(path);
    _Check(preconditions, path, existing);

    store::Resource resource =
        existing.value_or(store::Resource::New(parent, protocol::LastSegment(path), user, false, _clock.Now()));
    resource.version += existing ? 1 : 0;
    Observe(resource, upload);
    if (attributes.isExecutable) {
        resource.isExecutable = *attributes.isExecutable;
    } else if (resource.isExecutable) {
        upload.SetExecutable(true);
        upload.Sync();
    }
    resource.changed = _clock.Now();
    std::vector<store::Rename> steps;
    const std::string old = _content.WorkPath();
    if (existing) {
        steps.push_back({path, old, true});
    }
    steps.push_back({upload.Path(), path});
    _Change(steps, [&] {
        if (existing) {
            _metadata.Update(resource);
        } else {
            _metadata.Insert(resource);
        }
        _reconciler.ChildrenChanged(parent, protocol::ParentPath(path));
    });
    _content.RemoveWork(old);
    return {resource, !existing};
}

store::Resource ServiceTree::MakeCollection(const protocol::Address& address, const std::string& user,
                                            const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    const auto known = _Path(address);
    if (!known) {
        throw protocol::HttpError(409, "There is no folder with this id");
    }
    const std::string& path = *known;
    if (_reconciler.Find(path)) {
        throw protocol::HttpError(405, "There is a resource at '" + path + "' already");
    }
    store::Resource parent = _ParentOfNew(path);
    _RefuseOccupied(path);
    _Check(preconditions, path, std::nullopt);

    store::Resource resource = store::Resource::New(parent, protocol::LastSegment(path), user, true, _clock.Now());
    const std::string made = _content.WorkPath();
    _content.MakeFolder(made);
    _Change({{made, path}}, [&] {
        Observe(resource, _content.Find(path).value());
        _metadata.Insert(resource);
        _reconciler.ChildrenChanged(parent, protocol::ParentPath(path));
    });
    return resource;
}

void ServiceTree::Remove(const protocol::Address& address, const Preconditions& preconditions) {
    const std::string removed = _content.WorkPath();
    {
        const std::lock_guard lock(_mutex);
        _WithSpace([&] { _Remove(address, preconditions, removed); });
    }
    _content.RemoveWork(removed);
    const std::lock_guard lock(_mutex);
    _reserve.Fill();
}

// What is at `address` goes to the work path `removed`.
void ServiceTree::_Remove(const protocol::Address& address, const Preconditions& preconditions,
                          const std::string& removed) {
    const std::string path = _ExistingPath(address);
    if (path.empty()) {
        throw protocol::HttpError(403, "The root cannot be removed");
    }
    const store::Resource resource = _Existing(path);
    _Check(preconditions, path, resource);
    store::Resource parent = _ParentOfNew(path);
    _Change({{path, removed}}, [&] {
        _metadata.RemoveTree(resource.id);
        _reconciler.ChildrenChanged(parent, protocol::ParentPath(path));
    });
    _log.AddRemoval({path, resource.isCollection, _clock.Now()});
}

ServiceTree::Destination ServiceTree::_Destination(const std::string& from, const std::string& to, bool overwrite) {
    if (protocol::IsWithin(to, from) || protocol::IsWithin(from, to)) {
        throw protocol::HttpError(403, "Of '" + from + "' and '" + to + "' one lies in the other");
    }
    Destination destination;
    destination.parent = _ParentOfNew(to);
    destination.replaced = _reconciler.Child(destination.parent, to);
    if (destination.replaced && !overwrite) {
        throw protocol::HttpError(412, "There is a resource at '" + to + "' already");
    }
    _RefuseOccupied(to);
    return destination;
}

// Copies the files and folders of `source` to the work path `target`, and sets the checksums of the files in `source`.
void ServiceTree::_CopyContent(Listing& source, const std::string& target, const store::Interruption& isInterrupted) {
    const std::string from = source.entries.front().path;
    for (auto& [path, resource, dead] : source.entries) {
        const std::string copyPath = target + path.substr(from.size());
        if (resource.isCollection) {
            _content.MakeFolder(copyPath);
        } else {
            const auto copy = _content.MakeFile(copyPath);
            copy->Fill(_content.Open(path).Get(), isInterrupted);
            copy->SetExecutable(resource.isExecutable);
            copy->Sync();
            copy->Finish();
            copy->Keep();
            resource.md5 = copy->Checksum();
        }
    }
}

bool ServiceTree::Copy(const std::string& from, const std::string& to, protocol::Request::Depth depth, bool overwrite,
                       const std::string& user, const Preconditions& preconditions,
                       const store::Interruption& isInterrupted) {
    const std::lock_guard lock(_mutex);
    const store::Resource original = _Existing(from);
    Destination place = _Destination(from, to, overwrite);
    _Check(preconditions, from, original);

    Listing source = _List(from, original, depth, isInterrupted);
    const std::string made = _content.WorkPath();
    const std::string old = _content.WorkPath();
    std::vector<store::Rename> steps;
    if (place.replaced) {
        steps.push_back({to, old, !place.replaced->isCollection && !original.isCollection});
    }
    steps.push_back({made, to});
    try {
        _CopyContent(source, made, isInterrupted);
        _Change(steps, [&] {
            if (place.replaced) {
                _metadata.RemoveTree(place.replaced->id);
            }
            std::map<std::int64_t, std::int64_t> newIds{{original.parent, place.parent.id}};
            for (auto& [path, resource, dead] : source.entries) {
                const std::string copyPath = to + path.substr(from.size());
                const std::int64_t originalId = resource.id;
                resource.parent = newIds.at(resource.parent);
                resource.name = protocol::LastSegment(copyPath);
                resource.owner = user;
                resource.version = 1;
                resource.created = _clock.Now();
                resource.changed = resource.created;
                Observe(resource, _content.Find(copyPath).value());
                _metadata.Insert(resource);
                _metadata.CopyDeadProperties(originalId, resource.id);
                newIds[originalId] = resource.id;
            }
            _reconciler.ChildrenChanged(place.parent, protocol::ParentPath(to));
        });
    } catch (...) {
        _content.RemoveWork(made);
        throw;
    }
    _LogReplaced(place, to);
    _content.RemoveWork(old);
    return !place.replaced;
}

// To be called when what was at `to` has been replaced.
void ServiceTree::_LogReplaced(const Destination& place, const std::string& to) {
    if (place.replaced) {
        _log.AddRemoval({to, place.replaced->isCollection, _clock.Now()});
    }
}

bool ServiceTree::Move(const std::string& from, const std::string& to, bool overwrite,
                       const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    store::Resource resource = _Existing(from);
    Destination place = _Destination(from, to, overwrite);
    _Check(preconditions, from, resource);

    store::Resource oldParent = _ParentOfNew(from);
    resource.parent = place.parent.id;
    resource.name = protocol::LastSegment(to);
    const std::string old = _content.WorkPath();
    std::vector<store::Rename> steps;
    if (place.replaced) {
        steps.push_back({to, old});
    }
    steps.push_back({from, to});
    _Change(steps, [&] {
        if (place.replaced) {
            _metadata.RemoveTree(place.replaced->id);
        }
        _metadata.Update(resource);
        // All of it has other addresses now: to a client that knew these from before, all of it changed.
        _metadata.TreeChanged(resource.id, _clock.Now());
        _reconciler.ChildrenChanged(oldParent, protocol::ParentPath(from));
        _reconciler.ChildrenChanged(place.parent, protocol::ParentPath(to));
    });
    _log.AddRemoval({from, resource.isCollection, _clock.Now()});
    _LogReplaced(place, to);
    _content.RemoveWork(old);
    return !place.replaced;
}

ServiceTree::PropertyOutcomes ServiceTree::SetProperties(const std::string& path,
                                                         const protocol::PropertyUpdate& update,
                                                         const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    store::Resource resource = _Existing(path);
    _Check(preconditions, path, resource);
    const store::Resource before = resource;

    std::vector<Outcome> outcomes;
    bool failed = false;
    store::MetadataStore::Transaction transaction(_metadata);
    for (const auto& instruction : update.instructions) {
        const protocol::PropertyName& name = instruction.property.name;
        const LiveProperty* live = FindLiveProperty(name);
        Outcome outcome{name, 200, ""};
        if (live != nullptr && live->set == nullptr) {
            outcome.status = 403;
            outcome.reason = "The service itself keeps this property";
        } else if (live != nullptr) {
            outcome.reason =
                instruction.hasElements ? "The value has elements in it" : live->set(resource, instruction.text);
            outcome.status = outcome.reason.empty() ? 200 : 409;
        } else if (instruction.isRemoval) {
            _metadata.RemoveDeadProperty(resource.id, name);
        } else {
            _metadata.SetDeadProperty(resource.id, instruction.property);
        }
        failed = failed || outcome.status != 200;
        outcomes.push_back(std::move(outcome));
    }
    if (!failed) {
        resource.changed = _clock.Now();
        _SetAttributes(path, before, resource, [&] {
            _metadata.Update(resource);
            transaction.Commit();
        });
    } else {
        for (Outcome& outcome : outcomes) {
            outcome.status = outcome.status == 200 ? 424 : outcome.status;
        }
    }
    return {std::move(outcomes), resource.isCollection};
}

// Has the disk and the metadata agree about the time and the executable bit of `resource`, which were those of
// `before`. If the process is killed in between, the disk is right.
void ServiceTree::_SetAttributes(const std::string& path, const store::Resource& before, store::Resource& resource,
                                 const std::function<void()>& changeMetadata) {
    if (resource.modified == before.modified && resource.isExecutable == before.isExecutable) {
        changeMetadata();
        return;
    }
    try {
        _content.SetAttributes(path, resource.modified, resource.isExecutable);
        // The disk may keep less of the time.
        Observe(resource, _content.Find(path).value());
        changeMetadata();
    } catch (...) {
        _content.SetAttributes(path, before.modified, before.isExecutable);
        throw;
    }
}

std::vector<Listing::Entry> ServiceTree::WithoutChecksum(std::int64_t afterId) {
    const std::lock_guard lock(_mutex);
    std::vector<Listing::Entry> entries;
    for (store::Resource& file : _metadata.WithoutChecksum(afterId)) {
        std::string path = _PathOf(file);
        entries.push_back({std::move(path), std::move(file), {}});
    }
    return entries;
}

void ServiceTree::CompleteChecksum(Listing::Entry& entry, const store::Interruption& isInterrupted) {
    store::Resource& resource = entry.resource;
    {
        const std::lock_guard lock(_mutex);
        const auto known = _metadata.ById(resource.id);
        if (known && known->size == resource.size && known->modified == resource.modified) {
            resource.md5 = known->md5;
        }
    }
    if (!resource.md5.empty()) {
        return;
    }
    resource.md5 = _content.Checksum(entry.path, resource.size, resource.modified, isInterrupted).value_or("");
}

void ServiceTree::KeepChecksums(const std::vector<store::Resource>& resources) {
    const std::lock_guard lock(_mutex);
    store::MetadataStore::Transaction transaction(_metadata);
    for (const store::Resource& resource : resources) {
        _metadata.SetChecksum(resource);
    }
    transaction.Commit();
}

}  // namespace service::tree
