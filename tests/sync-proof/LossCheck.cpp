#include "tests/sync-proof/LossCheck.h"

#include <filesystem>

#include "tests/sync-proof/FolderImage.h"

namespace syncproof {

std::string LossCheck::Lost(const std::vector<const RandomChanges*>& writers, const std::vector<std::string>& folders,
                            const std::function<bool(const std::string& path)>& isLostThere) {
    std::set<std::string> left;
    std::set<std::string> kept;
    for (const std::string& folder : folders) {
        left.merge(ContentsOf(ReadFolder(folder)));
        const std::string trash = folder + "/.ovsync/trash";
        if (std::filesystem::exists(trash)) {
            kept.merge(ContentsOf(ReadFolder(trash)));
        }
    }
    std::set<std::string> retired;
    for (const RandomChanges* writer : writers) {
        retired.insert(writer->Retired().begin(), writer->Retired().end());
    }
    std::string lost;
    for (const RandomChanges* writer : writers) {
        for (const auto& [content, path] : writer->Written()) {
            if (retired.count(content) != 0 || left.count(content) != 0) {
                continue;
            }
            if (kept.count(content) != 0) {
                _tally.inTrash += _inTrash.insert(content).second ? 1 : 0;
            } else if (_lostThere.count(content) != 0 || isLostThere(path)) {
                _tally.lostThere += _lostThere.insert(content).second ? 1 : 0;
            } else {
                lost += path + ": " + content.substr(0, 40) + "\n";
            }
        }
    }
    return lost;
}

}  // namespace syncproof
