#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "service/protocol/IBody.h"

namespace service::protocol {

/// What the service answers to one request.
struct Answer {
    int status = 200;
    /// A name occurs at most once. Content-Length follows from the body, unless it is among these: then the body is
    /// sent as it is, however long, and the connection closed.
    std::vector<std::pair<std::string, std::string>> headers;
    /// Null is an empty body.
    std::unique_ptr<IBody> body;
};

}  // namespace service::protocol
