#pragma once

#include <string>
#include <string_view>

namespace service {

/// A server path is the decoded path of a resource without slashes at its ends, for example "Projects/A/b c.txt"; the
/// root is the empty text. Segments are valid UTF-8, at most 255 bytes long and never ".", ".." or empty.

/// The folder at the root that holds the service's own files. No request reaches it.
inline constexpr std::string_view reservedName = ".ovsync-service";

/// Whether `name` can be a segment of a server path.
bool IsSegment(std::string_view name);

/// The server path in the path of a URL, which must begin with "/". Empty segments are skipped.
/// Throws HttpError: 400 when it cannot be read, 403 when it is reserved, 414 when a segment is too long.
std::string ParseUrlPath(std::string_view urlPath);

/// The percent-encoded absolute path of a resource; ends in "/" for a collection.
std::string Href(std::string_view path, bool collection);

/// The path of the collection that `path` lies in; the root for the root.
std::string ParentPath(std::string_view path);

/// The last segment of `path`.
std::string LastSegment(std::string_view path);

/// The path of the child `name` of `parent`.
std::string ChildPath(std::string_view parent, std::string_view name);

/// Whether `path` is `ancestor` or lies somewhere below it.
bool IsWithin(std::string_view path, std::string_view ancestor);

}  // namespace service
