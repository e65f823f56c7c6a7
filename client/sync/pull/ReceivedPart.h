#pragma once

#include <mutex>
#include <optional>

#include "client/store/PartialDownload.h"

namespace ovsync {
namespace pull {

/// How far a large download has come that could go on in another pass: told by its thread, asked by the one that
/// records it. Thread-safe.
class ReceivedPart {
public:
    void Set(const std::optional<store::PartialDownload>& part) {
        const std::lock_guard<std::mutex> lock(_mutex);
        _part = part;
    }
    /// None while there is nothing to go on with.
    std::optional<store::PartialDownload> Get() const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _part;
    }

private:
    mutable std::mutex _mutex;
    std::optional<store::PartialDownload> _part;
};

}  // namespace pull
}  // namespace ovsync
