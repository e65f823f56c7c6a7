#pragma once

#include <atomic>
#include <exception>

namespace ovsync {
namespace report {

/// Thrown inside a pass that was told to stop.
class Cancelled : public std::exception {
public:
    const char* what() const noexcept override { return "stopped"; }

    static void ThrowIf(const std::atomic<bool>& isStopped) {
        if (isStopped) {
            throw Cancelled();
        }
    }
};

}  // namespace report
}  // namespace ovsync
