#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace service::protocol {

/// Dates as HTTP and WebDAV write them. All times are seconds since 1970 UTC; years outside 1 to 9999 are clamped.

/// "Fri, 20 Nov 2026 10:15:30 GMT"
std::string FormatHttpDate(std::int64_t seconds);

/// "2026-11-20T10:15:30Z"
std::string FormatIsoDate(std::int64_t seconds);

/// Reads the three forms HTTP allows; nothing when the text is none of them or names a day that does not exist.
std::optional<std::int64_t> ParseHttpDate(const std::string& text);

/// Reads the form that FormatIsoDate() writes.
std::optional<std::int64_t> ParseIsoDate(const std::string& text);

}  // namespace service::protocol
