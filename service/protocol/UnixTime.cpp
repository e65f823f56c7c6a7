#include "service/protocol/UnixTime.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace service::protocol {
namespace {

constexpr std::int64_t NanosecondsInASecond = 1000000000;
constexpr std::size_t FractionDigits = 9;

bool IsDecimal(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<std::int64_t> Number(std::string_view digits) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return IsDecimal(digits) && error == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string FormatUnixTime(std::int64_t nanoseconds) {
    if (nanoseconds < 0) {
        return {};
    }
    std::string text = std::to_string(nanoseconds / NanosecondsInASecond);
    if (const std::int64_t fraction = nanoseconds % NanosecondsInASecond; fraction != 0) {
        const std::string digits = std::to_string(fraction);
        text += '.' + std::string(FractionDigits - digits.size(), '0') + digits;
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text;
}

std::optional<std::int64_t> ParseUnixTime(std::string_view text) {
    const std::size_t point = text.find('.');
    const auto seconds = Number(text.substr(0, point));
    std::string digits(point == std::string_view::npos ? "0" : text.substr(point + 1));
    if (!seconds || !IsDecimal(digits) || digits.size() > FractionDigits ||
        *seconds >= std::numeric_limits<std::int64_t>::max() / NanosecondsInASecond) {
        return std::nullopt;
    }
    digits.resize(FractionDigits, '0');
    return *seconds * NanosecondsInASecond + Number(digits).value_or(0);
}

}  // namespace service::protocol
