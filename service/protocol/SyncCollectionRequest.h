#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "service/protocol/PropfindRequest.h"
#include "service/protocol/Request.h"

namespace service::protocol {

/// What a REPORT of the kind sync-collection (RFC 6578) asks for.
struct SyncCollectionRequest {
    /// Reads the body of a request. Throws HttpError 400.
    static SyncCollectionRequest Parse(std::string_view body);

    /// Empty: everything that is there.
    std::string token;
    Request::Depth depth = Request::Depth::Infinity;
    /// How many entries the answer may have.
    std::optional<std::uint64_t> limit;
    PropfindRequest properties;
};

}  // namespace service::protocol
