#include "tests/dvsync/platform/FakePlatform.h"

#include <cstddef>

#include "dvsync/platform/Platform.h"

namespace tests {

FakePlatform& TheFakePlatform() {
    static FakePlatform fake;
    return fake;
}

}  // namespace tests

namespace sync {
namespace dv {
namespace dvsync {
namespace platform {

std::uint32_t CurrentProcessId() {
    return tests::TheFakePlatform().currentProcessId;
}

std::vector<std::uint32_t> ProcessIds(std::size_t limit) {
    tests::FakePlatform& fake = tests::TheFakePlatform();
    ++fake.walks;
    std::vector<std::uint32_t> ids;
    for (const auto& process : fake.processes) {
        if (ids.size() < limit) {
            ids.push_back(process.first);
        }
    }
    return ids;
}

std::optional<std::u16string> ProcessName(std::uint32_t processId) {
    tests::FakePlatform& fake = tests::TheFakePlatform();
    fake.processesAskedFor.push_back(processId);
    for (const auto& process : fake.processes) {
        if (process.first == processId) {
            return process.second;
        }
    }
    return std::nullopt;
}

std::u16string ModuleFile(const std::u16string& moduleName) {
    for (const auto& module : tests::TheFakePlatform().moduleFiles) {
        if (module.first == moduleName) {
            return module.second;
        }
    }
    return std::u16string();
}

}  // namespace platform
}  // namespace dvsync
}  // namespace dv
}  // namespace sync
