#pragma once

#include <atomic>
#include <cstdint>

namespace service::store {

/// The service's time in milliseconds since 1970 UTC. It never goes back, even if the system's clock is set back: a
/// change must not look older than an answer that was given before it. Thread-safe.
class Clock {
public:
    /// The time now; at least every time returned before and every time given to NotBefore().
    std::int64_t Now();

    /// From now on the clock does not show less than `milliseconds`.
    void NotBefore(std::int64_t milliseconds);

private:
    std::atomic<std::int64_t> _latest{0};
};

}  // namespace service::store
