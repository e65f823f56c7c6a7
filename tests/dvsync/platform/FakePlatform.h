#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

/// The operating system as dvsync/platform/Platform.h shows it, in a program that is linked with this instead of a real
/// one. There is one, which tests set as they need it: `TheFakePlatform() = FakePlatform()` is a system with nothing in
/// it.
struct FakePlatform {
    std::uint32_t currentProcessId = 1;
    /// In the order of the system; a process without a name is one that the system does not tell the name of.
    std::vector<std::pair<std::uint32_t, std::optional<std::u16string>>> processes;
    std::vector<std::pair<std::u16string, std::u16string>> moduleFiles;

    int walks = 0;
    std::vector<std::uint32_t> processesAskedFor;
};

FakePlatform& TheFakePlatform();

}  // namespace tests
