#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace service::protocol {

/// The body of an answer, read once from its beginning to its end. Used by one thread at a time.
class IBody {
public:
    IBody() = default;
    virtual ~IBody() = default;
    IBody(const IBody&) = delete;
    IBody& operator=(const IBody&) = delete;

    /// The number of bytes, if it is known beforehand.
    virtual std::optional<std::uint64_t> Size() const = 0;

    /// Fills up to `size` (at least 1) bytes of `buffer` and returns their number; 0 is the end.
    /// Throws any std::exception when the rest cannot be had: the connection is then closed in mid-body.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
};

}  // namespace service::protocol
