#include "host/core/PosixSync.h"

#include <link.h>

#include <QFile>
#include <QString>
#include <charconv>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "dvsync/Utf16.h"
#include "dvsync/platform/Platform.h"

namespace sync {
namespace dv {
namespace dvsync {
namespace platform {

namespace {

// In the encoding in which Qt hands file names back to the system.
std::u16string Decoded(const std::string& fileName) {
    return ToUtf16(QFile::decodeName(fileName.c_str()));
}

struct ModuleQuery {
    std::string libraryName;
    std::string fileName;
};

// "libNAME.so", or that followed by a version.
int TakeModule(dl_phdr_info* module, std::size_t /*size*/, void* data) {
    ModuleQuery& query = *static_cast<ModuleQuery*>(data);
    const std::string_view fileName = module->dlpi_name;
    const std::string_view name = fileName.substr(fileName.rfind('/') + 1);
    const std::size_t length = query.libraryName.size();
    if (name.substr(0, length) != query.libraryName || (name.size() > length && name[length] != '.')) {
        return 0;
    }
    query.fileName = fileName;
    return 1;
}

}  // namespace

std::uint32_t CurrentProcessId() {
    return static_cast<std::uint32_t>(getpid());
}

std::vector<std::uint32_t> ProcessIds(std::size_t limit) {
    std::vector<std::uint32_t> ids;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; entry != end && ids.size() < limit;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        std::uint32_t id = 0;
        const auto parsed = std::from_chars(name.data(), name.data() + name.size(), id);
        if (parsed.ec == std::errc() && *parsed.ptr == '\0') {
            ids.push_back(id);
        }
    }
    return ids;
}

std::optional<std::u16string> ProcessName(std::uint32_t processId) {
    std::error_code error;
    std::string name = std::filesystem::read_symlink("/proc/" + std::to_string(processId) + "/exe", error).filename();
    if (error) {
        return std::nullopt;
    }
    // So the kernel marks a program that was replaced on disk while it runs.
    const std::string_view mark = " (deleted)";
    if (name.size() > mark.size() && std::string_view(name).substr(name.size() - mark.size()) == mark) {
        name.resize(name.size() - mark.size());
    }
    return Decoded(name);
}

std::u16string ModuleFile(const std::u16string& moduleName) {
    ModuleQuery query;
    query.libraryName = ("lib" + QFile::encodeName(FromUtf16(moduleName)) + ".so").constData();
    dl_iterate_phdr(TakeModule, &query);
    return Decoded(query.fileName);
}

}  // namespace platform
}  // namespace dvsync
}  // namespace dv
}  // namespace sync
