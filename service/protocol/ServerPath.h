#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace service::protocol {

/// A server path is the decoded path of a resource without slashes at its ends, for example "Projects/A/b c.txt"; the
/// root is the empty text. Segments are valid UTF-8, at most 255 bytes long and never ".", ".." or empty.

/// The folder at the root that holds the service's own files. No request reaches it.
inline constexpr std::string_view ReservedName = ".ovsync-service";

/// The name in the root that the addresses of what is no server path begin with. Nothing is stored there.
inline constexpr std::string_view AddressName = ".ovs";

/// Whether `path` is or begins with one of the two names above.
bool IsReserved(std::string_view path);

/// Whether `name` can be a segment of a server path.
bool IsSegment(std::string_view name);

/// The segments of the path of a URL as they are, without the empty ones.
std::vector<std::string_view> SplitUrlPath(std::string_view urlPath);

/// The bytes that a percent-encoded text stands for; nothing when a '%' is not followed by two hexadecimal digits.
std::optional<std::string> DecodeSegment(std::string_view encoded);

/// The segment of a server path that a percent-encoded text stands for.
/// Throws HttpError: 400 when it cannot be read, 414 when it is too long.
std::string ParseSegment(std::string_view encoded);

/// The server path in the path of a URL, which must begin with "/". Empty segments are skipped.
/// Throws HttpError as ParseSegment() does, and 403 when it is reserved.
std::string ParseUrlPath(std::string_view urlPath);

/// The percent-encoded absolute path of a resource; ends in "/" for a collection.
std::string Href(std::string_view path, bool isCollection);

/// The path of the collection that `path` lies in; the root for the root.
std::string ParentPath(std::string_view path);

/// The last segment of `path`.
std::string LastSegment(std::string_view path);

/// The path of the child `name` of `parent`.
std::string ChildPath(std::string_view parent, std::string_view name);

/// Whether `path` is `ancestor` or lies somewhere below it.
bool IsWithin(std::string_view path, std::string_view ancestor);

}  // namespace service::protocol
