#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace service::protocol {

/// A part of a file.
struct ByteRange {
    /// Reads the header Range of a request for a file of `size` bytes. Nothing when it is not of bytes, cannot be read,
    /// or names several ranges: all of these may be ignored. An empty range cannot be satisfied. Positions beyond what
    /// 64 bits hold lie behind the end of every file.
    static std::optional<ByteRange> Parse(std::string_view header, std::uint64_t size);

    /// In bytes, as the next one.
    std::uint64_t first = 0;
    std::uint64_t size = 0;
};

}  // namespace service::protocol
