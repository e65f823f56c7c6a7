#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace service::test {

/// A new folder that goes with this object, with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return _path; }
    std::string operator/(const std::string& name) const { return _path + "/" + name; }

    /// Writes a file below the folder; folders that are missing are made.
    void Write(const std::string& name, const std::string& content) const;
    std::string Read(const std::string& name) const;
    bool Has(const std::string& name) const;

private:
    std::string _path;
};

/// The content of a file; none when it cannot be read.
std::optional<std::string> ReadFile(const std::string& path);

/// The content of a file in tests/service/fixtures.
std::string Fixture(const std::string& name);

}  // namespace service::test
