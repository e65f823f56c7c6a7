#include "service/protocol/Credentials.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>

namespace service::protocol {
namespace {

std::optional<std::string> DecodeBase64(std::string_view text) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t padding = text.size() - std::min(text.find_last_not_of('=') + 1, text.size());
    if (text.size() % 4 != 0 || padding > 2) {
        return std::nullopt;
    }
    text.remove_suffix(padding);
    std::string decoded;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const std::size_t value = digits.find(c);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << 6U) | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            decoded += static_cast<char>((bits >> static_cast<unsigned>(count)) & 0xFFU);
        }
    }
    // What is left over stands for nothing, and there is only one way to write it.
    const bool hasRest = (bits & ((1U << static_cast<unsigned>(count)) - 1U)) != 0;
    return hasRest ? std::nullopt : std::optional(decoded);
}

}  // namespace

std::optional<Credentials> Credentials::Parse(std::string_view header) {
    constexpr std::string_view scheme = "basic ";
    if (header.size() < scheme.size() || strncasecmp(header.data(), scheme.data(), scheme.size()) != 0) {
        return std::nullopt;
    }
    header.remove_prefix(std::min(header.find_first_not_of(' ', scheme.size()), header.size()));
    const auto decoded = DecodeBase64(header);
    const std::size_t colon = decoded ? decoded->find(':') : std::string::npos;
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    return Credentials{decoded->substr(0, colon), decoded->substr(colon + 1)};
}

}  // namespace service::protocol
