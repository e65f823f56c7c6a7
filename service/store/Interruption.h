#pragma once

#include <functional>
#include <stdexcept>

namespace service::store {

/// Asked now and then during work that takes its time; it ends when this returns true. Empty: never.
using Interruption = std::function<bool()>;

class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("Nobody waits for the answer any more") {}
};

/// Throws Interrupted when the work is to end.
inline void ThrowIf(const Interruption& isInterrupted) {
    if (isInterrupted && isInterrupted()) {
        throw Interrupted();
    }
}

}  // namespace service::store
