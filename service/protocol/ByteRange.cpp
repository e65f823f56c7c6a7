#include "service/protocol/ByteRange.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <limits>

namespace service::protocol {
namespace {

constexpr std::uint64_t Most = std::numeric_limits<std::uint64_t>::max();

// Nothing when the text has other characters than digits.
std::optional<std::uint64_t> Position(std::string_view digits) {
    if (digits.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc::result_out_of_range ? Most : value;
}

}  // namespace

std::optional<ByteRange> ByteRange::Parse(std::string_view header, std::uint64_t size) {
    constexpr std::string_view unit = "bytes=";
    if (header.size() < unit.size() || strncasecmp(header.data(), unit.data(), unit.size()) != 0) {
        return std::nullopt;
    }
    header.remove_prefix(unit.size());
    const std::size_t dash = header.find('-');
    if (dash == std::string_view::npos || header.size() == 1) {
        return std::nullopt;
    }
    const std::string_view last = header.substr(dash + 1);
    const auto begin = Position(header.substr(0, dash));
    const auto end = last.empty() ? Most : Position(last);
    if (!begin || !end) {
        return std::nullopt;
    }
    if (dash == 0) {
        const std::uint64_t count = std::min(*end, size);
        return ByteRange{size - count, count};
    }
    if (*end < *begin) {
        return std::nullopt;
    }
    return *begin >= size ? ByteRange{} : ByteRange{*begin, std::min(*end, size - 1) - *begin + 1};
}

}  // namespace service::protocol
