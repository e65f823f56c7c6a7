#include "service/protocol/HttpDate.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace service::protocol {
namespace {

constexpr std::int64_t FirstSecond = -62135596800;
constexpr std::int64_t LastSecond = 253402300799;

std::string Format(std::int64_t seconds, const char* format) {
    const std::time_t time = std::clamp(seconds, FirstSecond, LastSecond);
    std::tm fields{};
    gmtime_r(&time, &fields);
    std::array<char, 40> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), format, &fields);
    return std::string(text.data(), length);
}

std::optional<std::int64_t> Parse(const std::string& text, const char* format) {
    std::tm fields{};
    const char* end = strptime(text.c_str(), format, &fields);
    if (end == nullptr || end != text.c_str() + text.size()) {
        return std::nullopt;
    }
    const int day = fields.tm_mday;
    const std::time_t time = timegm(&fields);
    // timegm() turns 30 February into 2 March.
    if (fields.tm_mday != day) {
        return std::nullopt;
    }
    return time;
}

}  // namespace

std::string FormatHttpDate(std::int64_t seconds) {
    return Format(seconds, "%a, %d %b %Y %H:%M:%S GMT");
}

std::string FormatIsoDate(std::int64_t seconds) {
    return Format(seconds, "%Y-%m-%dT%H:%M:%SZ");
}

std::optional<std::int64_t> ParseHttpDate(const std::string& text) {
    for (const char* format : {"%a, %d %b %Y %H:%M:%S GMT", "%a, %d-%b-%y %H:%M:%S GMT", "%a %b %d %H:%M:%S %Y"}) {
        if (const auto seconds = Parse(text, format)) {
            return seconds;
        }
    }
    return std::nullopt;
}

std::optional<std::int64_t> ParseIsoDate(const std::string& text) {
    return Parse(text, "%Y-%m-%dT%H:%M:%SZ");
}

}  // namespace service::protocol
