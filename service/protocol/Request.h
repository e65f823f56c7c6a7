#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "service/protocol/Address.h"

namespace service::protocol {

/// A request as it came in.
class Request {
public:
    enum class Depth { Zero, One, Infinity };

    std::string method;
    /// "HTTP/1.1" or another.
    std::string version;
    /// Still percent-encoded, without a query.
    std::string target;
    /// By their names in lower case. Lines of one name are joined by commas.
    std::map<std::string, std::string> headers;
    /// The body, except of a PUT, whose body is a file.
    std::string body;
    std::string user;
    /// Whether nobody waits for the answer any more. Empty: somebody does.
    std::function<bool()> isAbandoned;

    /// The header with this name (in lower case), or null.
    const std::string* Header(const std::string& name) const;

    /// Throws HttpError 400 when another reader could take the request for another one, or see its end elsewhere.
    void RequireClear() const;

    /// The server path that the request is about. Throws HttpError, 403 for a folder by its id.
    std::string Path() const;

    /// What the request is about. Throws HttpError.
    Address Where() const;

    /// Whether it is about a folder by its id, or something in one.
    bool IsByFolderId() const;

    /// Whether it is about the sync configuration, which has no path.
    bool IsForSyncConfiguration() const;

    /// Whether the client names itself as one of the service's own: the answers then differ from RFC 4918.
    bool IsOfOwnClient() const;

    /// The server path in a URL that another part of the request gives, absolute or without scheme and host. Throws
    /// HttpError, 502 if it is on another server.
    std::string PathOf(std::string_view url) const;

    /// The header Depth, or infinity. Throws HttpError 400.
    Depth RequestedDepth() const;

    /// Whether the header Prefer asks for short answers.
    bool PrefersMinimal() const;
};

}  // namespace service::protocol
