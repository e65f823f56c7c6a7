#include "service/protocol/ServerPath.h"

#include <charconv>

#include "service/protocol/HttpError.h"
#include "service/protocol/XmlText.h"

namespace service::protocol {
namespace {

constexpr std::size_t LongestSegment = 255;

}  // namespace

bool IsSegment(std::string_view name) {
    return !name.empty() && name.size() <= LongestSegment && name != "." && name != ".." &&
           name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos && IsValidUtf8(name);
}

bool IsReserved(std::string_view path) {
    return IsWithin(path, ReservedName) || IsWithin(path, AddressName);
}

std::vector<std::string_view> SplitUrlPath(std::string_view urlPath) {
    std::vector<std::string_view> segments;
    while (!urlPath.empty()) {
        const std::size_t length = std::min(urlPath.find('/'), urlPath.size());
        if (length > 0) {
            segments.push_back(urlPath.substr(0, length));
        }
        urlPath.remove_prefix(std::min(length + 1, urlPath.size()));
    }
    return segments;
}

std::optional<std::string> DecodeSegment(std::string_view encoded) {
    std::string decoded;
    decoded.reserve(encoded.size());
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] != '%') {
            decoded += encoded[i];
            continue;
        }
        unsigned value = 0;
        const std::string_view digits = encoded.substr(i + 1, 2);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2) {
            return std::nullopt;
        }
        decoded += static_cast<char>(value);
        i += 2;
    }
    return decoded;
}

std::string ParseSegment(std::string_view encoded) {
    std::optional<std::string> segment = DecodeSegment(encoded);
    if (!segment) {
        throw HttpError(400, "The URL has a '%' that two hexadecimal digits do not follow");
    }
    if (segment->size() > LongestSegment) {
        throw HttpError(414, "A name in the URL is longer than 255 bytes");
    }
    if (!IsSegment(*segment)) {
        throw HttpError(400, "A name in the URL is '.' or '..', has '/' or NUL in it, or is not UTF-8");
    }
    return std::move(*segment);
}

std::string ParseUrlPath(std::string_view urlPath) {
    if (urlPath.empty() || urlPath.front() != '/') {
        throw HttpError(400, "The URL's path does not begin with '/'");
    }
    if (urlPath.find('#') != std::string_view::npos) {
        throw HttpError(400, "The URL has a fragment");
    }
    std::string path;
    for (const std::string_view encoded : SplitUrlPath(urlPath)) {
        path = ChildPath(path, ParseSegment(encoded));
    }
    if (IsReserved(path)) {
        throw HttpError(403, "'" + path + "' belongs to the service itself");
    }
    return path;
}

std::string Href(std::string_view path, bool isCollection) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string href = "/";
    href.reserve(path.size() + 2);
    for (const char c : path) {
        const bool isUnreserved = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                                  std::string_view("-._~/").find(c) != std::string_view::npos;
        if (isUnreserved) {
            href += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            href += '%';
            href += digits[byte >> 4U];
            href += digits[byte & 0x0FU];
        }
    }
    if (isCollection && href.size() > 1) {
        href += '/';
    }
    return href;
}

std::string ParentPath(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string() : std::string(path.substr(0, slash));
}

std::string LastSegment(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string ChildPath(std::string_view parent, std::string_view name) {
    std::string path(parent);
    if (!path.empty()) {
        path += '/';
    }
    return path += name;
}

bool IsWithin(std::string_view path, std::string_view ancestor) {
    return ancestor.empty() || path == ancestor ||
           (path.size() > ancestor.size() && path.substr(0, ancestor.size()) == ancestor &&
            path[ancestor.size()] == '/');
}

}  // namespace service::protocol
