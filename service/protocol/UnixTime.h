#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace service::protocol {

/// "1795169730.5": seconds since 1970 UTC, with up to nine digits behind the point.

/// `nanoseconds` since 1970 as such a text, without zeros at the end of the fraction; empty for times before 1970.
std::string FormatUnixTime(std::int64_t nanoseconds);

/// The nanoseconds that a text stands for; nothing when it is no such time, or one that 64 bits of nanoseconds cannot
/// hold (from the year 2262 on).
std::optional<std::int64_t> ParseUnixTime(std::string_view text);

}  // namespace service::protocol
