#include "service/protocol/Request.h"

#include <strings.h>

#include <algorithm>

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

bool IsToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return c > ' ' && c < 0x7f &&
               std::string_view("\"(),/:;<=>?@[\\]{}").find(static_cast<char>(c)) == std::string_view::npos;
    });
}

bool HasControl(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return (c < ' ' && c != '\t') || c == 0x7f; });
}

bool IsHost(std::string_view text) {
    return text.find_first_of(" \t,/?#@\\") == std::string_view::npos;
}

bool IsNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

const std::string* Request::Header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? nullptr : &found->second;
}

void Request::RequireClear() const {
    for (const auto& [name, value] : headers) {
        if (!IsToken(name) || HasControl(value)) {
            throw HttpError(400, "A header has a character that none may have");
        }
    }
    if (HasControl(target) || target.find_first_of(" \t") != std::string::npos) {
        throw HttpError(400, "The URL has a blank or a control character");
    }
    const bool isOld = version == "HTTP/1.0";
    const std::string* host = Header("host");
    if (host == nullptr ? !isOld : !IsHost(*host)) {
        throw HttpError(400, "The header Host is missing, comes twice or names no host");
    }
    const std::string* length = Header("content-length");
    if (length != nullptr && !IsNumber(*length)) {
        throw HttpError(400, "The header Content-Length comes twice or is no number");
    }
    const std::string* encoding = Header("transfer-encoding");
    if (encoding != nullptr && (length != nullptr || isOld || strcasecmp(encoding->c_str(), "chunked") != 0)) {
        throw HttpError(400, "The header Transfer-Encoding is not 'chunked' alone, or comes with a Content-Length");
    }
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
    const std::string* spoken = Header("x-ovs-version");
    return spoken != nullptr && *spoken == "1";
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
