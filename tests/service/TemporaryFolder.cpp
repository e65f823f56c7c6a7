#include "tests/service/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace service::test {
namespace {

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("Cannot read " + path);
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
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
    return ReadFile(*this / name);
}

bool TemporaryFolder::Has(const std::string& name) const {
    return std::filesystem::exists(*this / name);
}

std::string Fixture(const std::string& name) {
    return ReadFile(std::string(FIXTURES) + "/" + name);
}

}  // namespace service::test
