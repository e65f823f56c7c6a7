#pragma once

#include <optional>
#include <string>
#include <vector>

#include "service/store/Clock.h"
#include "service/store/ContentStore.h"
#include "service/store/MetadataStore.h"
#include "service/store/Resource.h"
#include "service/tree/ChangeLog.h"

namespace service::tree {

/// Finds resources, and first brings their metadata in line with the disk: people may have put files and folders there,
/// changed them or taken them away. Whatever it returns was on the disk like that when it looked.
/// Throws as the content and the metadata do. Used by one thread at a time, which has both to itself.
class Reconciler {
public:
    /// The first four must outlive this object. `log` is told what is gone. `owner` is said to have made what people
    /// put there.
    Reconciler(store::ContentStore& content, store::MetadataStore& metadata, store::Clock& clock, ChangeLog& log,
               const std::string& owner);

    /// What is at a server path.
    std::optional<store::Resource> Find(const std::string& path);

    /// What is at `path`, the server path of a child of `parent`. Both operations bring `parent` up to date when its
    /// list of children turns out to have changed.
    std::optional<store::Resource> Child(store::Resource& parent, const std::string& path);
    /// The children of `parent`, which lies at `path`, in the order of the bytes of their names.
    std::vector<store::Resource> Children(store::Resource& parent, const std::string& path);
    /// Of the same those that are collections, and the files that changed after `since` (milliseconds). Takes less time
    /// where these are few.
    std::vector<store::Resource> CollectionsAndChanged(store::Resource& parent, const std::string& path,
                                                       std::int64_t since);

    /// Notes in `parent`, which lies at `path`, and in the metadata that its list of children has just changed.
    void ChildrenChanged(store::Resource& parent, const std::string& path);

private:
    store::Resource _Root();
    template <typename Row, typename Take>
    void _Compare(std::vector<Row> known, store::Resource& parent, const std::string& path, Take take);
    bool _Adopt(const store::Resource& parent, const std::string& path, std::optional<store::Resource>& known,
                const store::ContentStore::Entry* found);
    void _Refresh(store::Resource& known, const store::ContentStore::Entry& found);

    store::ContentStore& _content;
    store::MetadataStore& _metadata;
    store::Clock& _clock;
    ChangeLog& _log;
    std::string _owner;
};

/// Takes over what the disk says about the content of `resource`.
void Observe(store::Resource& resource, const store::ContentStore::Entry& found);

}  // namespace service::tree
