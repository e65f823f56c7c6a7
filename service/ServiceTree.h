#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/Address.h"
#include "service/Clock.h"
#include "service/ContentStore.h"
#include "service/Listing.h"
#include "service/MetadataStore.h"
#include "service/Preconditions.h"
#include "service/PropertyName.h"
#include "service/PropertyUpdate.h"
#include "service/Request.h"

namespace service {

/// The resources of a served folder: its files and what the service keeps about them, as one. Files that people put
/// into the folder, change or take away are noticed whenever their collection is looked at.
///
/// Every change is whole or not at all, whether it throws or the process is killed, and is on the disk when the
/// operation returns.
/// Throws HttpError when a request cannot be granted, std::system_error and std::runtime_error when the disk or the
/// database fails. Thread-safe; a checked precondition still holds when the change is made.
class ServiceTree {
public:
    /// Serves `directory`, undoing what a killed process left half done. `owner` is said to have made the files
    /// that people put there. Throws when the folder or its metadata cannot be used.
    ServiceTree(const std::string& directory, const std::string& owner);

    /// The service's time in milliseconds since 1970.
    std::int64_t Now() { return _clock.Now(); }

    /// Throws HttpError 404 when there is nothing at `address`.
    Listing List(const Address& address, Request::Depth depth, bool wantsDeadProperties);

    /// The resource at `path` and, if it is a file, the file opened for reading.
    std::pair<Resource, FileDescriptor> Open(const std::string& path, const Preconditions& preconditions);

    /// The sync configuration, opened for reading, and its size in bytes; nothing when there is none.
    std::optional<std::pair<FileDescriptor, std::uint64_t>> OpenSyncConfiguration() const;

    /// A file to be filled and given to Put().
    [[nodiscard]] std::unique_ptr<UploadFile> NewUpload();

    /// Makes the upload the content of `path`. Returns the resource and whether it is new.
    std::pair<Resource, bool> Put(const std::string& path, UploadFile& upload, const std::string& user,
                                  const Preconditions& preconditions);

    /// Returns what it made.
    Resource MakeCollection(const Address& address, const std::string& user, const Preconditions& preconditions);

    void Remove(const Address& address, const Preconditions& preconditions);

    /// Both return whether there was nothing at `to` before.
    bool Copy(const std::string& from, const std::string& to, Request::Depth depth, bool overwrite,
              const std::string& user, const Preconditions& preconditions);
    bool Move(const std::string& from, const std::string& to, bool overwrite, const Preconditions& preconditions);

    /// What became of one instruction of a PROPPATCH.
    struct Outcome {
        PropertyName name;
        int status = 200;
        /// Empty if it was done.
        std::string reason;
    };
    /// Follows all instructions, or none if one cannot be followed. Also returns whether the resource is a collection.
    std::pair<std::vector<Outcome>, bool> SetProperties(const std::string& path, const PropertyUpdate& update,
                                                        const Preconditions& preconditions);

    /// Computes the checksum if it is not known yet; it stays empty if the file has changed since.
    void CompleteChecksum(Listing::Entry& entry);
    /// Keeps the checksums of these files.
    void KeepChecksums(const std::vector<Resource>& resources);

    /// Fills the collection `path` with those of `files` small files, "file-000001.txt" and so on, that it lacks. They
    /// are spread evenly over `folders` folders in two levels below it, or lie in it if there are to be none.
    void Seed(const std::string& path, std::int64_t files, std::int64_t folders);

private:
    struct Destination {
        Resource parent;
        std::optional<Resource> replaced;
    };

    std::optional<std::string> _Path(const Address& address);
    std::string _ExistingPath(const Address& address);
    Resource _Root();
    std::optional<Resource> _Find(const std::string& path);
    Resource _Existing(const std::string& path);
    Resource _ParentOfNew(const std::string& path);
    std::optional<Resource> _Child(Resource& parent, const std::string& path);
    std::vector<Resource> _Children(Resource& parent, const std::string& path);
    bool _Adopt(const Resource& parent, std::optional<Resource>& known, const ContentStore::Entry* found);
    void _Refresh(Resource& known, const ContentStore::Entry& found);
    void _ChildrenChanged(Resource& parent, const std::string& path);
    Resource _New(const Resource& parent, const std::string& name, const std::string& user, bool isCollection);
    Listing _List(const std::string& path, const Resource& resource, Request::Depth depth);
    void _CopyContent(Listing& source, const std::string& target);
    Destination _Destination(const std::string& from, const std::string& to, bool overwrite);
    void _RefuseOccupied(const std::string& path) const;
    void _Check(const Preconditions& preconditions, const std::string& path, const std::optional<Resource>& resource);
    void _Change(std::vector<Rename> steps, const std::function<void()>& changeMetadata);

    Clock _clock;
    std::string _owner;
    ContentStore _content;
    MetadataStore _metadata;
    // Guards _metadata, and keeps it and the content in step.
    std::mutex _mutex;
};

}  // namespace service
