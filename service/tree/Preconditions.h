#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "service/protocol/Request.h"
#include "service/store/Resource.h"

namespace service::tree {

/// The headers by which a client makes a change depend on the state of resources: If-Match, If-None-Match,
/// If-Unmodified-Since and WebDAV's If (whose lock tokens match nothing, as there are no locks).
class Preconditions {
public:
    /// Finds the resource at a server path.
    using Finder = std::function<std::optional<store::Resource>(const std::string& path)>;

    /// Throws HttpError 400 when a header cannot be read. `request` must outlive this object.
    explicit Preconditions(const protocol::Request& request);

    /// Throws HttpError 412 when they are not met for a request about `path`, where `resource` is.
    void Check(const std::string& path, const std::optional<store::Resource>& resource, const Finder& find) const;

private:
    struct Condition {
        bool isNegated = false;
        /// With quotation marks; empty for a lock token.
        std::string tag;
    };
    struct Conditions {
        /// Empty: the resource the request is about.
        std::optional<std::string> path;
        std::vector<Condition> all;
    };

    void _ParseIf(std::string_view text);

    const protocol::Request& _request;
    std::vector<Conditions> _anyOf;
};

/// Whether a list of entity tags, as in If-None-Match, has that of `resource` or is "*". Weak tags match if
/// `matchWeak`.
bool HasTag(std::string_view list, const store::Resource& resource, bool matchWeak);

}  // namespace service::tree
