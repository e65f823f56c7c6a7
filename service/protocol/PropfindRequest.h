#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "service/protocol/Property.h"

struct _xmlNode;

namespace service::protocol {

/// The properties that a PROPFIND asks for.
struct PropfindRequest {
    enum class Kind { AllProperties, Names, Listed };

    /// Reads the body of a request; an empty one asks for all. Throws HttpError 400.
    static PropfindRequest Parse(std::string_view body);

    /// Adds the names of the elements in `parent` that are not there yet.
    void AddNames(const _xmlNode* parent);

    Kind kind = Kind::AllProperties;
    /// What is listed, or to be included beside all; in the order of the request, each name once.
    std::vector<PropertyName> names;

private:
    std::set<std::pair<std::string, std::string>> _seen;
};

}  // namespace service::protocol
