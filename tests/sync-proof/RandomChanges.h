#pragma once

#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/sync-proof/IFolderWriter.h"

namespace syncproof {

/// Changes what lies in a folder at random, the way people do: files and folders come, go, change, are renamed, take
/// each other's places, get other times, have awkward names. Each content that is written is written nowhere else.
class RandomChanges {
public:
    using Random = std::mt19937;

    /// `writer` works in `folder`, which lies on this disk. Each content begins with `side`.
    RandomChanges(const std::string& folder, const std::string& side, Random& random,
                  std::unique_ptr<IFolderWriter> writer);

    /// For a server that shows other names than it was given.
    void LeaveControlCharactersOut();

    /// Throws std::filesystem::filesystem_error when something else changes the folder meanwhile.
    void Change();
    /// Gives new content to a file that is there.
    void Modify(const std::string& path);
    /// Deletes a file, or a folder with everything in it.
    void Remove(const std::string& path);

    /// All contents that were written, and at which path.
    const std::map<std::string, std::string>& Written() const { return _written; }

    /// Notes what else is done.
    void Note(const std::string& action, const std::string& path);
    /// What was done, a line each.
    const std::string& Journal() const { return _journal; }

    /// The contents that were changed, overwritten or deleted.
    const std::set<std::string>& Retired() const { return _retired; }

private:
    /// Paths below the folder; "" is the folder itself.
    struct Tree {
        std::vector<std::string> files;
        std::vector<std::string> folders;
    };

    Tree _Look() const;
    std::string _At(const std::string& path) const { return _folder + "/" + path; }
    size_t _Below(size_t limit);
    std::string _AnyOf(const std::vector<std::string>& paths);
    /// A path at which there is nothing; empty when none was found.
    std::string _FreePath(const Tree& tree);
    std::string _NewContent(size_t size);
    void _Write(const std::string& path, const std::string& content);

    void _MakeFile(const Tree& tree);
    void _MakeFolder(const Tree& tree);
    void _Modify(const std::string& path, bool keepsSize);
    void _Touch(const Tree& tree);
    void _Delete(const Tree& tree);
    void _DeleteFolder(const Tree& tree);
    void _Rename(const Tree& tree);
    void _FileToFolder(const Tree& tree);
    void _FolderToFile(const Tree& tree);

    const std::string _folder;
    const std::string _side;
    Random& _random;
    const std::unique_ptr<IFolderWriter> _writer;
    size_t _nameCount;
    int _number = 0;
    std::map<std::string, std::string> _written;
    std::set<std::string> _retired;
    std::string _journal;
};

}  // namespace syncproof
