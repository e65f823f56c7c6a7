#include "service/protocol/Request.h"

#include <strings.h>

#include "service/protocol/HttpError.h"
#include "service/protocol/ServerPath.h"

namespace service::protocol {
namespace {

constexpr std::string_view Scheme = "http://";

struct UrlParts {
    // "host:port"; empty where the URL has none.
    std::string authority;
    std::string_view path;
};

UrlParts Split(std::string_view url) {
    if (url.size() < Scheme.size() || strncasecmp(url.data(), Scheme.data(), Scheme.size()) != 0) {
        return {"", url};
    }
    url.remove_prefix(Scheme.size());
    const std::size_t length = std::min(url.find('/'), url.size());
    const std::string_view path = url.substr(length);
    return {std::string(url.substr(0, length)), path.empty() ? "/" : path};
}

}  // namespace

const std::string* Request::Header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? nullptr : &found->second;
}

std::string Request::Path() const {
    return ParseUrlPath(Split(target).path);
}

std::string Request::PathOf(std::string_view url) const {
    if (url.substr(0, 2) == "//") {
        throw HttpError(400, "The URL '" + std::string(url) + "' has a host, but no scheme");
    }
    const auto [authority, path] = Split(url);
    const std::string* host = Header("host");
    const bool isForeign = authority.empty() ? url.find("://") < url.find('/')
                                             : host == nullptr || strcasecmp(authority.c_str(), host->c_str()) != 0;
    if (isForeign) {
        throw HttpError(502, "The URL '" + std::string(url) + "' is on another server");
    }
    return ParseUrlPath(path.substr(0, path.find('?')));
}

Address Request::Where() const {
    return Address::Parse(Split(target).path);
}

bool Request::IsByFolderId() const {
    return Address::IsById(Split(target).path);
}

bool Request::IsForSyncConfiguration() const {
    return Address::IsOfSyncConfiguration(Split(target).path);
}

bool Request::IsOfOwnClient() const {
    const std::string* version = Header("x-ovs-version");
    return version != nullptr && *version == "1";
}

Request::Depth Request::RequestedDepth() const {
    const std::string* depth = Header("depth");
    if (depth == nullptr || strcasecmp(depth->c_str(), "infinity") == 0) {
        return Depth::Infinity;
    }
    if (*depth == "0") {
        return Depth::Zero;
    }
    if (*depth == "1") {
        return Depth::One;
    }
    throw HttpError(400, "The header Depth is '" + *depth + "' instead of 0, 1 or infinity");
}

bool Request::PrefersMinimal() const {
    const std::string* prefer = Header("prefer");
    std::string_view rest = prefer == nullptr ? "" : std::string_view(*prefer);
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(','), rest.size());
        std::string preference;
        for (const char c : rest.substr(0, length)) {
            if (c != ' ' && c != '\t' && c != '"') {
                preference += c;
            }
        }
        preference.resize(std::min(preference.find(';'), preference.size()));
        if (strcasecmp(preference.c_str(), "return=minimal") == 0) {
            return true;
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return false;
}

}  // namespace service::protocol
