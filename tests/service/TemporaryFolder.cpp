#include "tests/service/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace service::test {
namespace {

std::string Require(const std::string& path) {
    std::optional<std::string> content = ReadFile(path);
    if (!content) {
        throw std::runtime_error("Cannot read " + path);
    }
    return *std::move(content);
}

}  // namespace

TemporaryFolder::TemporaryFolder() : _path((std::filesystem::temp_directory_path() / "service-test-XXXXXX").string()) {
    if (mkdtemp(_path.data()) == nullptr) {
        throw std::runtime_error("Cannot make " + _path);
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

void TemporaryFolder::Write(const std::string& name, const std::string& content) const {
    const std::filesystem::path path = *this / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file.flush()) {
        throw std::runtime_error("Cannot write " + path.string());
    }
}

std::string TemporaryFolder::Read(const std::string& name) const {
    return Require(*this / name);
}

bool TemporaryFolder::Has(const std::string& name) const {
    return std::filesystem::exists(*this / name);
}

std::optional<std::string> ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    // A folder can be opened, too, and its size is anything.
    std::error_code ignored;
    if (size < 0 || std::filesystem::is_directory(path, ignored)) {
        return std::nullopt;
    }
    // In one piece: instrumented iterators take a hundred times as long.
    std::string content(static_cast<std::size_t>(size), '\0');
    file.seekg(0).read(content.data(), size);
    content.resize(static_cast<std::size_t>(file.gcount()));
    return content;
}

std::string Fixture(const std::string& name) {
    return Require(std::string(FIXTURES) + "/" + name);
}

}  // namespace service::test
