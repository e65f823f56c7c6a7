#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "service/Body.h"

namespace service {

/// What the service answers to one request.
struct Answer {
    int status = 200;
    /// All headers but Content-Length, which follows from the body. A name occurs at most once.
    std::vector<std::pair<std::string, std::string>> headers;
    /// Null is an empty body.
    std::unique_ptr<Body> body;
};

}  // namespace service
