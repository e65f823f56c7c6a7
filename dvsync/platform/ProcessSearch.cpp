#include "dvsync/platform/ProcessSearch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "dvsync/platform/Platform.h"

namespace sync {
namespace dv {
namespace dvsync {
namespace platform {

namespace {

const std::size_t ProcessLimit = 1024;

}  // namespace

bool AnotherProcessIsRunning(const std::function<bool(const std::u16string& name)>& matches) {
    const std::uint32_t self = CurrentProcessId();
    const std::vector<std::uint32_t> ids = ProcessIds(ProcessLimit);
    return std::any_of(ids.begin(), ids.end(),
                       [&](std::uint32_t id) { return id != self && matches(ProcessName(id).value_or(u"<unknown>")); });
}

}  // namespace platform
}  // namespace dvsync
}  // namespace dv
}  // namespace sync
