#include "service/ServiceTree.h"

#include <cmath>
#include <map>
#include <set>

#include "service/HttpError.h"
#include "service/LiveProperty.h"
#include "service/ServerPath.h"
#include "service/XmlText.h"

namespace service {
namespace {

bool IsCollection(const ContentStore::Entry& entry) {
    return entry.kind == ContentStore::Kind::Collection;
}

// Whether the metadata still describes what is on the disk.
bool Describes(const Resource& known, const ContentStore::Entry& found) {
    return known.isCollection == IsCollection(found) && known.size == found.size && known.modified == found.modified;
}

std::string SeedName(const char* kind, std::int64_t number) {
    constexpr std::size_t Digits = 6;
    std::string name = std::to_string(number);
    name.insert(0, Digits - std::min(Digits, name.size()), '0');
    return name.insert(0, kind);
}

void RequireFolder(const std::string& path, const Resource& resource) {
    if (!resource.isCollection) {
        throw std::runtime_error("'" + path + "' is no folder");
    }
}

void Observe(Resource& resource, const ContentStore::Entry& found) {
    resource.size = found.size;
    resource.modified = found.modified;
}

void Observe(Resource& resource, const UploadFile& upload) {
    resource.size = upload.Size();
    resource.modified = upload.Modified();
    resource.md5 = upload.Checksum();
}

}  // namespace

ServiceTree::ServiceTree(const std::string& directory, const std::string& owner)
    : _owner(owner), _content(directory), _metadata(_content.OwnFile("metadata.db"), owner, _clock.Now()) {
    _content.Undo(_metadata.Journal());
    _metadata.ClearJournal();
    _content.ClearWork();
    _clock.NotBefore(_metadata.LastChange());
}

// Makes the change of the names on the disk and of the metadata one. The journal is on the disk before the first
// rename and is forgotten in the transaction of the metadata, so whoever finds it after a crash undoes the renames.
void ServiceTree::_Change(std::vector<Rename> steps, const std::function<void()>& changeMetadata) {
    for (Rename& step : steps) {
        const auto entry = _content.Find(step.source);
        if (!entry) {
            throw HttpError(409, "'" + step.source + "' was taken away meanwhile");
        }
        step.inode = entry->inode;
    }
    _metadata.WriteJournal(steps);
    try {
        MetadataStore::Transaction transaction(_metadata);
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

Resource ServiceTree::_New(const Resource& parent, const std::string& name, const std::string& user, bool isCollection) {
    Resource resource;
    resource.parent = parent.id;
    resource.name = name;
    resource.isCollection = isCollection;
    resource.owner = user;
    resource.created = _clock.Now();
    resource.changed = resource.created;
    return resource;
}

// Brings the metadata of one name in line with the disk. Returns whether the list of children changed by it. To be
// called in a transaction.
bool ServiceTree::_Adopt(const Resource& parent, std::optional<Resource>& known, const ContentStore::Entry* found) {
    bool listChanged = false;
    if (known && (found == nullptr || known->isCollection != IsCollection(*found))) {
        _metadata.RemoveTree(known->id);
        known.reset();
        listChanged = true;
    }
    if (found == nullptr) {
        return listChanged;
    }
    if (!known) {
        known = _New(parent, found->name, _owner, IsCollection(*found));
        Observe(*known, *found);
        _metadata.Insert(*known);
        return true;
    }
    _Refresh(*known, *found);
    return listChanged;
}

void ServiceTree::_Refresh(Resource& known, const ContentStore::Entry& found) {
    known.version += known.isCollection ? 0 : 1;
    known.md5.clear();
    known.changed = _clock.Now();
    Observe(known, found);
    _metadata.Update(known);
}

void ServiceTree::_ChildrenChanged(Resource& parent, const std::string& path) {
    parent.changed = _clock.Now();
    if (const auto found = _content.Find(path)) {
        Observe(parent, *found);
    }
    _metadata.UpdateTimes(parent);
}

std::optional<Resource> ServiceTree::_Child(Resource& parent, const std::string& path) {
    auto known = _metadata.Child(parent.id, LastSegment(path));
    auto found = _content.Find(path);
    if (found && found->kind == ContentStore::Kind::Other) {
        found.reset();
    }
    if (known.has_value() != found.has_value() || (known && !Describes(*known, *found))) {
        MetadataStore::Transaction transaction(_metadata);
        if (_Adopt(parent, known, found ? &*found : nullptr)) {
            _ChildrenChanged(parent, ParentPath(path));
        }
        transaction.Commit();
    }
    return known;
}

std::vector<Resource> ServiceTree::_Children(Resource& parent, const std::string& path) {
    std::vector<Resource> known = _metadata.Children(parent.id);
    // A folder that has just been taken away lists nothing; its own collection notices it the next time.
    const auto entries = _content.List(path).value_or(std::vector<ContentStore::Entry>());
    std::vector<Resource> children;
    children.reserve(entries.size());
    std::optional<MetadataStore::Transaction> transaction;
    bool listChanged = false;
    auto row = known.begin();
    auto entry = entries.begin();
    while (row != known.end() || entry != entries.end()) {
        const bool hasRow = row != known.end() && (entry == entries.end() || row->name <= entry->name);
        const bool hasEntry = entry != entries.end() && (row == known.end() || entry->name <= row->name);
        std::optional<Resource> child;
        if (hasRow) {
            child = std::move(*row++);
        }
        const ContentStore::Entry* found = hasEntry ? &*entry++ : nullptr;
        if (!child || found == nullptr || !Describes(*child, *found)) {
            if (!transaction) {
                transaction.emplace(_metadata);
            }
            listChanged = _Adopt(parent, child, found) || listChanged;
        }
        if (child) {
            children.push_back(std::move(*child));
        }
    }
    if (listChanged) {
        _ChildrenChanged(parent, path);
    }
    if (transaction) {
        transaction->Commit();
    }
    return children;
}

// The server path of `address`; nothing when it begins in a folder that is not there.
std::optional<std::string> ServiceTree::_Path(const Address& address) {
    if (!address.folder) {
        return address.path;
    }
    const auto folder = _metadata.ByItemId(*address.folder);
    std::string path;
    for (auto step = folder; step && step->parent != 0; step = _metadata.ById(step->parent)) {
        path = path.empty() ? step->name : ChildPath(step->name, path);
    }
    // People may have taken it away.
    const auto found = folder && folder->isCollection ? _Find(path) : std::nullopt;
    if (!found || found->id != folder->id) {
        return std::nullopt;
    }
    if (!address.path.empty()) {
        path = ChildPath(path, address.path);
    }
    if (IsReserved(path)) {
        throw HttpError(403, "'" + path + "' belongs to the service itself");
    }
    return path;
}

std::string ServiceTree::_ExistingPath(const Address& address) {
    const auto path = _Path(address);
    if (!path) {
        throw HttpError(404, "There is no folder with this id");
    }
    return *path;
}

Resource ServiceTree::_Root() {
    Resource root = _metadata.Root();
    const auto found = _content.Find("");
    if (found && !Describes(root, *found)) {
        _Refresh(root, *found);
    }
    return root;
}

std::optional<Resource> ServiceTree::_Find(const std::string& path) {
    std::optional<Resource> resource = _Root();
    for (std::size_t end = 0; resource && end < path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        resource = resource->isCollection ? _Child(*resource, path.substr(0, end)) : std::nullopt;
    }
    return resource;
}

Resource ServiceTree::_Existing(const std::string& path) {
    auto resource = _Find(path);
    if (!resource) {
        throw HttpError(404, "There is no resource at '" + path + "'");
    }
    return *resource;
}

Resource ServiceTree::_ParentOfNew(const std::string& path) {
    auto parent = _Find(ParentPath(path));
    if (!parent || !parent->isCollection) {
        throw HttpError(409, "There is no collection at '" + ParentPath(path) + "'");
    }
    return *parent;
}

// Symbolic links and the like are no resources, but the service does not overwrite what people put there.
void ServiceTree::_RefuseOccupied(const std::string& path) const {
    const auto entry = _content.Find(path);
    if (entry && entry->kind == ContentStore::Kind::Other) {
        throw HttpError(403, "What has the name '" + path + "' on the disk is neither a file nor a folder");
    }
}

void ServiceTree::_Check(const Preconditions& preconditions, const std::string& path,
                         const std::optional<Resource>& resource) {
    preconditions.Check(path, resource, [this](const std::string& other) { return _Find(other); });
}

Listing ServiceTree::_List(const std::string& path, const Resource& resource, Request::Depth depth) {
    Listing listing;
    listing.entries.push_back({path, resource, {}});
    for (std::size_t i = 0; i < listing.entries.size(); ++i) {
        const bool descend = depth == Request::Depth::Infinity || (depth == Request::Depth::One && i == 0);
        if (descend && listing.entries[i].resource.isCollection) {
            const std::string parentPath = listing.entries[i].path;
            for (Resource& child : _Children(listing.entries[i].resource, parentPath)) {
                std::string childPath = ChildPath(parentPath, child.name);
                listing.entries.push_back({std::move(childPath), std::move(child), {}});
            }
        }
        listing.lastChange = std::max(listing.lastChange, listing.entries[i].resource.changed);
    }
    return listing;
}

Listing ServiceTree::List(const Address& address, Request::Depth depth, bool wantsDeadProperties) {
    const std::lock_guard lock(_mutex);
    const std::string path = _ExistingPath(address);
    Listing listing = _List(path, _Existing(path), depth);
    if (wantsDeadProperties) {
        for (Listing::Entry& entry : listing.entries) {
            entry.deadProperties = _metadata.DeadProperties(entry.resource.id);
        }
    }
    return listing;
}

std::pair<Resource, FileDescriptor> ServiceTree::Open(const std::string& path, const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    Resource resource = _Existing(path);
    _Check(preconditions, path, resource);
    return {resource, resource.isCollection ? FileDescriptor() : _content.Open(path)};
}

std::optional<std::pair<FileDescriptor, std::uint64_t>> ServiceTree::OpenSyncConfiguration() const {
    return _content.OpenOwn("sync-config.xml");
}

std::unique_ptr<UploadFile> ServiceTree::NewUpload() {
    return _content.MakeFile(_content.WorkPath());
}

std::pair<Resource, bool> ServiceTree::Put(const std::string& path, UploadFile& upload, const std::string& user,
                                           const Preconditions& preconditions) {
    upload.Sync();
    upload.Finish();
    const std::lock_guard lock(_mutex);
    if (path.empty()) {
        throw HttpError(405, "The root is a collection");
    }
    Resource parent = _ParentOfNew(path);
    const auto existing = _Child(parent, path);
    if (existing && existing->isCollection) {
        throw HttpError(405, "'" + path + "' is a collection");
    }
    _RefuseOccupied(path);
    _Check(preconditions, path, existing);

    Resource resource = existing.value_or(_New(parent, LastSegment(path), user, false));
    resource.version += existing ? 1 : 0;
    Observe(resource, upload);
    resource.changed = _clock.Now();
    std::vector<Rename> steps;
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
        _ChildrenChanged(parent, ParentPath(path));
    });
    _content.RemoveWork(old);
    return {resource, !existing};
}

Resource ServiceTree::MakeCollection(const Address& address, const std::string& user,
                                     const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    const auto known = _Path(address);
    if (!known) {
        throw HttpError(409, "There is no folder with this id");
    }
    const std::string& path = *known;
    if (_Find(path)) {
        throw HttpError(405, "There is a resource at '" + path + "' already");
    }
    Resource parent = _ParentOfNew(path);
    _RefuseOccupied(path);
    _Check(preconditions, path, std::nullopt);

    Resource resource = _New(parent, LastSegment(path), user, true);
    const std::string made = _content.WorkPath();
    _content.MakeFolder(made);
    _Change({{made, path}}, [&] {
        Observe(resource, _content.Find(path).value());
        _metadata.Insert(resource);
        _ChildrenChanged(parent, ParentPath(path));
    });
    return resource;
}

void ServiceTree::Remove(const Address& address, const Preconditions& preconditions) {
    const std::string removed = _content.WorkPath();
    {
        const std::lock_guard lock(_mutex);
        const std::string path = _ExistingPath(address);
        if (path.empty()) {
            throw HttpError(403, "The root cannot be removed");
        }
        const Resource resource = _Existing(path);
        _Check(preconditions, path, resource);
        Resource parent = _ParentOfNew(path);
        _Change({{path, removed}}, [&] {
            _metadata.RemoveTree(resource.id);
            _ChildrenChanged(parent, ParentPath(path));
        });
    }
    _content.RemoveWork(removed);
}

ServiceTree::Destination ServiceTree::_Destination(const std::string& from, const std::string& to, bool overwrite) {
    if (IsWithin(to, from) || IsWithin(from, to)) {
        throw HttpError(403, "Of '" + from + "' and '" + to + "' one lies in the other");
    }
    Destination destination;
    destination.parent = _ParentOfNew(to);
    destination.replaced = _Child(destination.parent, to);
    if (destination.replaced && !overwrite) {
        throw HttpError(412, "There is a resource at '" + to + "' already");
    }
    _RefuseOccupied(to);
    return destination;
}

// Copies the files and folders of `source` to the work path `target`, and sets the checksums of the files in `source`.
void ServiceTree::_CopyContent(Listing& source, const std::string& target) {
    const std::string from = source.entries.front().path;
    for (auto& [path, resource, dead] : source.entries) {
        const std::string copyPath = target + path.substr(from.size());
        if (resource.isCollection) {
            _content.MakeFolder(copyPath);
        } else {
            const auto copy = _content.MakeFile(copyPath);
            copy->Fill(_content.Open(path).Get());
            copy->Sync();
            copy->Finish();
            copy->Keep();
            resource.md5 = copy->Checksum();
        }
    }
}

bool ServiceTree::Copy(const std::string& from, const std::string& to, Request::Depth depth, bool overwrite,
                       const std::string& user, const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    const Resource original = _Existing(from);
    Destination place = _Destination(from, to, overwrite);
    _Check(preconditions, from, original);

    Listing source = _List(from, original, depth);
    const std::string made = _content.WorkPath();
    const std::string old = _content.WorkPath();
    std::vector<Rename> steps;
    if (place.replaced) {
        steps.push_back({to, old, !place.replaced->isCollection && !original.isCollection});
    }
    steps.push_back({made, to});
    try {
        _CopyContent(source, made);
        _Change(steps, [&] {
            if (place.replaced) {
                _metadata.RemoveTree(place.replaced->id);
            }
            std::map<std::int64_t, std::int64_t> newIds{{original.parent, place.parent.id}};
            for (auto& [path, resource, dead] : source.entries) {
                const std::string copyPath = to + path.substr(from.size());
                const std::int64_t originalId = resource.id;
                resource.parent = newIds.at(resource.parent);
                resource.name = LastSegment(copyPath);
                resource.owner = user;
                resource.version = 1;
                resource.created = _clock.Now();
                resource.changed = resource.created;
                Observe(resource, _content.Find(copyPath).value());
                _metadata.Insert(resource);
                _metadata.CopyDeadProperties(originalId, resource.id);
                newIds[originalId] = resource.id;
            }
            _ChildrenChanged(place.parent, ParentPath(to));
        });
    } catch (...) {
        _content.RemoveWork(made);
        throw;
    }
    _content.RemoveWork(old);
    return !place.replaced;
}

bool ServiceTree::Move(const std::string& from, const std::string& to, bool overwrite,
                       const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    Resource resource = _Existing(from);
    Destination place = _Destination(from, to, overwrite);
    _Check(preconditions, from, resource);

    Resource oldParent = _ParentOfNew(from);
    resource.parent = place.parent.id;
    resource.name = LastSegment(to);
    const std::string old = _content.WorkPath();
    std::vector<Rename> steps;
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
        _ChildrenChanged(oldParent, ParentPath(from));
        _ChildrenChanged(place.parent, ParentPath(to));
    });
    _content.RemoveWork(old);
    return !place.replaced;
}

std::pair<std::vector<ServiceTree::Outcome>, bool> ServiceTree::SetProperties(const std::string& path,
                                                                              const PropertyUpdate& update,
                                                                              const Preconditions& preconditions) {
    const std::lock_guard lock(_mutex);
    Resource resource = _Existing(path);
    _Check(preconditions, path, resource);

    std::vector<Outcome> outcomes;
    bool failed = false;
    MetadataStore::Transaction transaction(_metadata);
    for (const auto& instruction : update.instructions) {
        const PropertyName& name = instruction.property.name;
        const LiveProperty* live = name.nameSpace == DavNamespace ? FindLiveProperty(name.name) : nullptr;
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
        _metadata.Update(resource);
        transaction.Commit();
    } else {
        for (Outcome& outcome : outcomes) {
            outcome.status = outcome.status == 200 ? 424 : outcome.status;
        }
    }
    return {std::move(outcomes), resource.isCollection};
}

void ServiceTree::CompleteChecksum(Listing::Entry& entry) {
    Resource& resource = entry.resource;
    if (!resource.isCollection && resource.md5.empty()) {
        resource.md5 = _content.Checksum(entry.path, resource.size, resource.modified).value_or("");
    }
}

void ServiceTree::KeepChecksums(const std::vector<Resource>& resources) {
    const std::lock_guard lock(_mutex);
    MetadataStore::Transaction transaction(_metadata);
    for (const Resource& resource : resources) {
        _metadata.SetChecksum(resource);
    }
    transaction.Commit();
}

void ServiceTree::Seed(const std::string& path, std::int64_t files, std::int64_t folders) {
    const std::lock_guard lock(_mutex);
    if (!_content.Find(path)) {
        _content.MakeFolder(path);
    }
    std::map<std::string, Resource> present;
    for (Listing::Entry& entry : _List(path, _Existing(path), Request::Depth::Infinity).entries) {
        present.emplace(std::move(entry.path), std::move(entry.resource));
    }
    RequireFolder(path, present.at(path));
    MetadataStore::Transaction transaction(_metadata);
    std::set<std::string> grown;
    const auto make = [&](const std::string& parent, const std::string& name, bool isCollection) {
        std::string made = ChildPath(parent, name);
        if (const auto found = present.find(made); found != present.end()) {
            if (isCollection) {
                RequireFolder(made, found->second);
            }
            return made;
        }
        Resource resource = _New(present.at(parent), name, _owner, isCollection);
        if (isCollection) {
            _content.MakeFolder(made);
            grown.insert(made);
        } else {
            const auto file = _content.MakeFile(made);
            file->Write(name);
            file->Finish();
            file->Keep();
            Observe(resource, *file);
        }
        _metadata.Insert(resource);
        present.emplace(made, std::move(resource));
        grown.insert(parent);
        return made;
    };
    // As many folders in the first level as each of them has in the second.
    const auto width = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(folders))));
    std::vector<std::string> places{path};
    for (std::int64_t i = 0; i < folders; ++i) {
        const bool isFirst = i < width;
        const std::string& parent = isFirst ? path : places.at(static_cast<std::size_t>(1 + i % width));
        places.push_back(make(parent, SeedName("folder-", i + 1), true));
    }
    for (std::int64_t i = 0; i < files; ++i) {
        const std::int64_t place = folders == 0 ? 0 : 1 + i % folders;
        make(places.at(static_cast<std::size_t>(place)), SeedName("file-", i + 1) + ".txt", false);
    }
    for (const std::string& folder : grown) {
        _ChildrenChanged(present.at(folder), folder);
    }
    transaction.Commit();
}

}  // namespace service
