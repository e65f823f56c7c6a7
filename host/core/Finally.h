#pragma once

#include "host/core/PosixSync.h"

#include <functional>
#include <utility>

namespace sync {
namespace core {

/// Calls an action when its scope is left, on whatever path. What the action throws leaves the destructor (an empty
/// action throws std::bad_function_call), so that it must not throw while another exception passes. Not thread-safe.
class Finally {
public:
    explicit Finally(std::function<void()> action) : _action(std::move(action)) {}
    ~Finally() noexcept(false) { _action(); }
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;

private:
    const std::function<void()> _action;
};

}  // namespace core
}  // namespace sync
