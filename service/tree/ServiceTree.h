#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "service/protocol/Address.h"
#include "service/protocol/Property.h"
#include "service/protocol/PropertyUpdate.h"
#include "service/protocol/Request.h"
#include "service/store/Clock.h"
#include "service/store/ContentStore.h"
#include "service/store/MetadataStore.h"
#include "service/store/SpaceReserve.h"
#include "service/tree/Listing.h"
#include "service/tree/Preconditions.h"
#include "service/tree/Reconciler.h"

namespace service::tree {

/// The resources of a served folder: its files and what the service keeps about them, as one. Files that people put
/// into the folder, change or take away are noticed whenever their collection is looked at.
///
/// Every change is whole or not at all, whether it throws or the process is killed, and is on the disk when the
/// operation returns.
/// Throws HttpError when a request cannot be granted, std::system_error and std::runtime_error when the disk or the
/// database fails. What reads or removes still works on a full disk. Thread-safe; a checked precondition still holds
/// when the change is made.
class ServiceTree {
public:
    /// Serves `directory`, undoing what a killed process left half done. `owner` is said to have made the files
    /// that people put there. Throws when the folder or its metadata cannot be used.
    ServiceTree(const std::string& directory, const std::string& owner);

    /// The service's time in milliseconds since 1970.
    std::int64_t Now() { return _clock.Now(); }

    /// What a listing has beside the rest.
    struct Extras {
        bool hasDeadProperties = false;
        bool hasSyncToken = false;
    };

    /// Throws HttpError 404 when there is nothing at `address`, and Interrupted.
    Listing List(const protocol::Address& address, protocol::Request::Depth depth, Extras wanted,
                 const store::Interruption& isInterrupted = {});

    /// What has changed in the collection at `path` since the token was given, down to `depth`; all that is there if it
    /// is empty. What changed more than once, or was made and removed again, may be among it. Throws HttpError,
    /// InvalidSyncToken and Interrupted.
    Changes ListChanges(const std::string& path, protocol::Request::Depth depth, const std::string& token,
                        bool wantsDeadProperties, const store::Interruption& isInterrupted);

    struct Opened {
        store::Resource resource;
        /// Open for reading if it is a file.
        store::FileDescriptor content;
    };

    Opened Open(const std::string& path, const Preconditions& preconditions);

    /// The sync configuration, opened for reading; nothing when there is none.
    std::optional<store::ContentStore::OpenFile> OpenSyncConfiguration() const;

    /// A file to be filled and given to Put().
    [[nodiscard]] std::unique_ptr<store::UploadFile> NewUpload();

    struct Stored {
        store::Resource resource;
        /// Whether there was nothing before.
        bool isNew = false;
    };

    /// What a client says of a file that it puts.
    struct FileAttributes {
        /// In nanoseconds since 1970; else the time of the upload.
        std::optional<std::int64_t> modified = std::nullopt;
        /// Else as it was in the file that is replaced.
        std::optional<bool> isExecutable = std::nullopt;
    };

    /// Makes the upload the content of `path`.
    Stored Put(const std::string& path, store::UploadFile& upload, const FileAttributes& attributes,
               const std::string& user, const Preconditions& preconditions);

    /// Returns what it made.
    store::Resource MakeCollection(const protocol::Address& address, const std::string& user,
                                   const Preconditions& preconditions);

    void Remove(const protocol::Address& address, const Preconditions& preconditions);

    /// Both return whether there was nothing at `to` before. A copy throws Interrupted.
    bool Copy(const std::string& from, const std::string& to, protocol::Request::Depth depth, bool overwrite,
              const std::string& user, const Preconditions& preconditions,
              const store::Interruption& isInterrupted = {});
    bool Move(const std::string& from, const std::string& to, bool overwrite, const Preconditions& preconditions);

    /// What became of one instruction of a PROPPATCH.
    struct Outcome {
        protocol::PropertyName name;
        int status = 200;
        /// Empty if it was done.
        std::string reason;
    };
    struct PropertyOutcomes {
        /// In the order of the instructions.
        std::vector<Outcome> outcomes;
        /// Whether the resource is a collection.
        bool isCollection = false;
    };

    /// Follows all instructions, or none if one cannot be followed.
    PropertyOutcomes SetProperties(const std::string& path, const protocol::PropertyUpdate& update,
                                   const Preconditions& preconditions);

    /// Some files without a checksum, those with the lowest ids above `afterId`, in the order of these.
    std::vector<Listing::Entry> WithoutChecksum(std::int64_t afterId);
    /// Computes the checksum of a file, unless it is known by now; it stays empty if the file has changed since, or if
    /// it was interrupted.
    void CompleteChecksum(Listing::Entry& entry, const store::Interruption& isInterrupted = {});
    /// Keeps the checksums of these files, but for those that have changed since.
    void KeepChecksums(const std::vector<store::Resource>& resources);

private:
    struct Destination {
        store::Resource parent;
        std::optional<store::Resource> replaced;
    };

    template <typename Operation>
    auto _WithSpace(Operation operation);
    std::string _PathOf(const store::Resource& resource);
    std::optional<std::string> _Path(const protocol::Address& address);
    std::string _ExistingPath(const protocol::Address& address);
    store::Resource _Existing(const std::string& path);
    store::Resource _ParentOfNew(const std::string& path);
    void _AddDeadProperties(std::vector<Listing::Entry>& entries);
    /// What lies below the collection, as deep as `depth` says, and has changed after `since`.
    std::vector<Listing::Entry> _ListChanged(const std::string& path, const store::Resource& collection,
                                             protocol::Request::Depth depth, std::int64_t since,
                                             const store::Interruption& isInterrupted);
    std::int64_t _LastChange();
    std::string _SyncToken();
    std::vector<ChangeLog::Removal> _Removals(std::int64_t since, const std::string& path,
                                              protocol::Request::Depth depth, const std::set<std::string>& present,
                                              const std::string& token);
    Listing _List(const std::string& path, const store::Resource& resource, protocol::Request::Depth depth,
                  const store::Interruption& isInterrupted);
    void _CopyContent(Listing& source, const std::string& target, const store::Interruption& isInterrupted);
    void _Remove(const protocol::Address& address, const Preconditions& preconditions, const std::string& removed);
    Destination _Destination(const std::string& from, const std::string& to, bool overwrite);
    void _LogReplaced(const Destination& place, const std::string& to);
    void _RefuseOccupied(const std::string& path) const;
    void _Check(const Preconditions& preconditions, const std::string& path,
                const std::optional<store::Resource>& resource);
    void _SetAttributes(const std::string& path, const store::Resource& before, store::Resource& resource,
                        const std::function<void()>& changeMetadata);
    void _Change(std::vector<store::Rename> steps, const std::function<void()>& changeMetadata);

    store::Clock _clock;
    store::ContentStore _content;
    store::SpaceReserve _reserve;
    store::MetadataStore _metadata;
    ChangeLog _log;
    Reconciler _reconciler;
    // Guards _metadata, and keeps it and the content in step.
    std::mutex _mutex;
};

}  // namespace service::tree
