#define PSAPI_VERSION 2
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// Needs what windows.h declares.
#include <psapi.h>

#include "dvsync/platform/Platform.h"

namespace sync {
namespace dv {
namespace dvsync {
namespace platform {

namespace {

// In characters, the final NUL included.
const DWORD NameLimit = MAX_PATH;

std::u16string FromBuffer(const wchar_t* buffer, DWORD length) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t), "UTF-16, as everywhere on Windows");
    return std::u16string(buffer, buffer + length);
}

}  // namespace

std::uint32_t CurrentProcessId() {
    return GetCurrentProcessId();
}

std::vector<std::uint32_t> ProcessIds(std::size_t limit) {
    std::vector<DWORD> ids(limit);
    DWORD size = 0;
    if (!K32EnumProcesses(ids.data(), static_cast<DWORD>(limit * sizeof(DWORD)), &size)) {
        return {};
    }
    return std::vector<std::uint32_t>(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(size / sizeof(DWORD)));
}

std::optional<std::u16string> ProcessName(std::uint32_t processId) {
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId);
    if (process == nullptr) {
        return std::nullopt;
    }
    wchar_t name[NameLimit];
    DWORD length = 0;
    // The first module is the executable, and there is room for no other.
    HMODULE executable = nullptr;
    DWORD size = 0;
    if (K32EnumProcessModules(process, &executable, sizeof(HMODULE), &size)) {
        length = K32GetModuleBaseNameW(process, executable, name, NameLimit);
    }
    CloseHandle(process);
    return length > 0 ? std::make_optional(FromBuffer(name, length)) : std::nullopt;
}

std::u16string ModuleFile(const std::u16string& moduleName) {
    const std::wstring name(moduleName.begin(), moduleName.end());
    const HMODULE module = GetModuleHandleW(name.c_str());
    if (module == nullptr) {
        return std::u16string();
    }
    wchar_t file[NameLimit];
    return FromBuffer(file, GetModuleFileNameW(module, file, NameLimit));
}

}  // namespace platform
}  // namespace dvsync
}  // namespace dv
}  // namespace sync
