#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace service::protocol {

/// What a request is about, by its path alone or by a folder's id and the path from there on.
struct Address {
    /// Whether the path of a URL is "/.ovs/folders/ID/" or "/.ovs/folders/ID/NAME/".
    static bool IsById(std::string_view urlPath);

    /// Whether the path of a URL is "/.ovs/sync-config.xml", the one address that is of no resource.
    static bool IsOfSyncConfiguration(std::string_view urlPath);

    /// Reads the path of a URL. An id that cannot be read is one that no folder has.
    /// Throws HttpError: as ParseUrlPath() does, and 403 for more than one name behind an id.
    static Address Parse(std::string_view urlPath);

    /// A server path. Behind a folder's id, the name of something in the folder, or empty for the folder itself.
    std::string path;
    /// The item id of the folder, if it is by id.
    std::optional<std::string> folder = std::nullopt;
};

}  // namespace service::protocol
