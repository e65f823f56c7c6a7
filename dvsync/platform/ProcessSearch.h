#pragma once

#include <functional>
#include <string>

namespace sync {
namespace dv {
namespace dvsync {
namespace platform {

/// Whether `matches` takes the name of a process other than this one. Looks at the first 1024 processes, and at none
/// after the first match. A process whose name the system does not tell is called "<unknown>". Thread-safe.
bool AnotherProcessIsRunning(const std::function<bool(const std::u16string& name)>& matches);

}  // namespace platform
}  // namespace dvsync
}  // namespace dv
}  // namespace sync
