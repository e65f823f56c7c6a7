#include "service/tree/Seeding.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "service/protocol/ServerPath.h"

namespace service::tree {
namespace {

std::string NumberedName(const char* kind, std::int64_t number) {
    constexpr std::size_t digits = 6;
    std::string name = std::to_string(number);
    name.insert(0, digits - std::min(digits, name.size()), '0');
    return name.insert(0, kind);
}

std::filesystem::file_type TypeOf(const std::filesystem::path& path) {
    return std::filesystem::symlink_status(path).type();
}

void SeedFolder(const std::filesystem::path& root, const std::string& path) {
    const auto type = TypeOf(root / path);
    if (type == std::filesystem::file_type::not_found) {
        std::filesystem::create_directory(root / path);
    } else if (type != std::filesystem::file_type::directory) {
        throw std::runtime_error("'" + path + "' is no folder");
    }
}

void SeedFile(const std::filesystem::path& path) {
    if (TypeOf(path) != std::filesystem::file_type::not_found) {
        return;
    }
    std::ofstream file(path, std::ios::binary);
    file << path.filename().string() << std::flush;
    if (!file) {
        throw std::system_error(errno, std::generic_category(), "Cannot write '" + path.string() + "'");
    }
}

}  // namespace

void Seed(ServiceTree& tree, const std::string& directory, const Seeding& seeding) {
    const std::filesystem::path root(directory);
    SeedFolder(root, seeding.folder);
    // As many folders in the first level as each of them has in the second.
    const auto width = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(seeding.folders))));
    std::vector<std::string> folders;
    for (std::int64_t i = 0; i < seeding.folders; ++i) {
        const std::string parent = i < width ? seeding.folder : folders.at(static_cast<std::size_t>(i % width));
        folders.push_back(protocol::ChildPath(parent, NumberedName("folder-", i + 1)));
        SeedFolder(root, folders.back());
    }
    for (std::int64_t i = 0; i < seeding.files; ++i) {
        const std::string& parent =
            folders.empty() ? seeding.folder : folders.at(static_cast<std::size_t>(i % seeding.folders));
        SeedFile(root / parent / (NumberedName("file-", i + 1) + ".txt"));
    }
    std::vector<store::Resource> files;
    for (auto& entry : tree.List({seeding.folder}, protocol::Request::Depth::Infinity, {}).entries) {
        if (!entry.resource.isCollection && entry.resource.md5.empty()) {
            tree.CompleteChecksum(entry);
            files.push_back(std::move(entry.resource));
        }
    }
    tree.KeepChecksums(files);
}

}  // namespace service::tree
