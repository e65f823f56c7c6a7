#pragma once

#include <map>
#include <string>

#include "tests/service/HttpClient.h"

namespace service::test {

/// A multistatus document, taken apart.
struct Multistatus {
    struct Response {
        /// By "{namespace}name"; the namespace DAV: is left out, and so are elements around other elements.
        std::map<std::string, std::string> values;
        /// The status of each property, by the same names.
        std::map<std::string, int> statuses;
    };

    /// Throws std::runtime_error when `body` is no multistatus, or has an href twice.
    explicit Multistatus(const std::string& body);

    std::map<std::string, Response> responses;
};

/// The values of the properties of one resource, whatever the service knows of it.
std::map<std::string, std::string> Properties(HttpClient& client, const std::string& target);

/// `body` with all that differs from run to run replaced: dates by DATE, ISODATE or SECONDS, the first part of ids by
/// STORE.
std::string Normalized(const std::string& body);

}  // namespace service::test
