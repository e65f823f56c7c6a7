#pragma once

#include <string_view>
#include <vector>

#include "service/protocol/Property.h"

namespace service::protocol {

/// The properties that a PROPFIND asks for.
struct PropfindRequest {
    enum class Kind { AllProperties, Names, Listed };

    /// Reads the body of a request; an empty one asks for all. Throws HttpError 400.
    static PropfindRequest Parse(std::string_view body);

    Kind kind = Kind::AllProperties;
    /// What is listed, or to be included beside all; in the order of the request, each name once.
    std::vector<PropertyName> names;
};

}  // namespace service::protocol
