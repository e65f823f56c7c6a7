#include "tests/sync-proof/FolderImage.h"

#include <filesystem>

#include "tests/service/TemporaryFolder.h"

namespace syncproof {
namespace {

namespace fs = std::filesystem;

/// `text` for a message.
std::string Short(const std::string& text) {
    return text.size() <= 40 ? "\"" + text + "\"" : "\"" + text.substr(0, 40) + "\"... " + std::to_string(text.size());
}

}  // namespace

FolderImage ReadFolder(const std::string& folder) {
    FolderImage image;
    for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator(); ++entry) {
        const std::string path = entry->path().string().substr(folder.size() + 1);
        const std::string name = entry->path().filename();
        // Apache keeps in .DAV what clients set of files.
        if (path == ".ovsync" || path == ".ovsync-service" || name == ".DAV") {
            entry.disable_recursion_pending();
        } else if (name.rfind(".davfs.tmp", 0) == 0) {
            // Apache was killed while it received this, and lists it nowhere.
        } else if (entry->is_symlink()) {
            image[path] = "-> " + fs::read_symlink(entry->path()).string();
        } else if (entry->is_directory()) {
            image[path + "/"] = "";
        } else {
            image[path] = service::test::ReadFile(entry->path()).value_or("");
        }
    }
    return image;
}

std::string Differences(const FolderImage& here, const FolderImage& there) {
    std::string text;
    for (const auto& [path, content] : here) {
        const auto other = there.find(path);
        if (other == there.end()) {
            text += path + ": only here, " + Short(content) + "\n";
        } else if (other->second != content) {
            text += path + ": here " + Short(content) + ", there " + Short(other->second) + "\n";
        }
    }
    for (const auto& [path, content] : there) {
        if (here.count(path) == 0) {
            text += path + ": only there, " + Short(content) + "\n";
        }
    }
    return text;
}

std::set<std::string> MissingFrom(const FolderImage& image, const FolderImage& expected) {
    std::set<std::string> missing;
    for (const auto& [path, content] : expected) {
        const auto found = image.find(path);
        if (found == image.end() || found->second != content) {
            missing.insert(path);
        }
    }
    return missing;
}

std::set<std::string> ContentsOf(const FolderImage& image) {
    std::set<std::string> contents;
    for (const auto& [path, content] : image) {
        if (!content.empty()) {
            contents.insert(content);
        }
    }
    return contents;
}

}  // namespace syncproof
