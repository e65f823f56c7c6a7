#pragma once

#include <atomic>

namespace ovsync {
namespace input {

/// Turns the first SIGINT, SIGTERM or SIGHUP into a request to stop as long as it lives; a second one ends the program
/// at once. One at a time. A signal that was ignored stays so.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Becomes true with the signal. Thread-safe.
    static const std::atomic<bool>& IsRequested();
};

}  // namespace input
}  // namespace ovsync
