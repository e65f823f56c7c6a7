#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace service {

/// The body of an answer, read once from its beginning to its end. Used by one thread at a time.
class Body {
public:
    Body() = default;
    virtual ~Body() = default;
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;

    /// The number of bytes, if it is known beforehand.
    virtual std::optional<std::uint64_t> Size() const = 0;

    /// Fills up to `size` (at least 1) bytes of `buffer` and returns their number; 0 is the end.
    /// Throws any std::exception when the rest cannot be had: the connection is then closed in mid-body.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
};

}  // namespace service
