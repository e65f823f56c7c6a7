#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "service/protocol/Property.h"
#include "service/store/Resource.h"
#include "service/tree/ChangeLog.h"

namespace service::tree {

/// A consistent picture of a resource, its children or its tree.
struct Listing {
    struct Entry {
        /// The server path.
        std::string path;
        store::Resource resource;
        /// Empty unless they were asked for.
        std::vector<protocol::DeadProperty> deadProperties;
    };

    /// The asked resource is the first; a collection stands before what lies in it.
    std::vector<Entry> entries;
    /// When anything in it changed last, by the service's clock, in milliseconds.
    std::int64_t lastChange = 0;
};

/// What has changed in a collection.
struct Changes {
    /// What is new or another, in the order of a listing, without the collection itself.
    std::vector<Listing::Entry> entries;
    std::vector<ChangeLog::Removal> removals;
    /// Stands for all of it.
    std::string token;
};

}  // namespace service::tree
