#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the library asks the operating system. One unit per system implements it; the one for Windows needs nothing but
/// the standard library and kernel32. Texts are UTF-16. A failure of the system is an empty answer. Thread-safe.

namespace sync {
namespace dv {
namespace dvsync {
namespace platform {

std::uint32_t CurrentProcessId();

/// The ids of the first processes, `limit` at most.
std::vector<std::uint32_t> ProcessIds(std::size_t limit);

/// The base name of the executable of a process; nothing when the system does not tell.
std::optional<std::u16string> ProcessName(std::uint32_t processId);

/// The full file name of a module that is loaded into this process, named as its loader is asked for it: without
/// directory and extension. Empty when there is none.
std::u16string ModuleFile(const std::u16string& moduleName);

}  // namespace platform
}  // namespace dvsync
}  // namespace dv
}  // namespace sync
