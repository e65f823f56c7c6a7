#include "tests/sync-proof/RandomChanges.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace syncproof {
namespace {

namespace fs = std::filesystem;

const char* const Names[] = {"a",
                             "b",
                             "c",
                             "notes.txt",
                             "Notes.txt",
                             "report (1).pdf",
                             "caf\xC3\xA9",
                             "cafe\xCC\x81",
                             "\xE6\x97\xA5\xE6\x9C\xAC",
                             "\xF0\x9F\x93\x81",
                             "100%",
                             "a%2Fb",
                             "%2e%2e",
                             "q?x=1&y=2",
                             "#1",
                             "semi;colon",
                             "it's \"quoted\"",
                             "<&>]]>",
                             "back\\slash",
                             " leading",
                             "trailing ",
                             "trailing.",
                             ".hidden",
                             "plus+and&",
                             "a:b|c*d",
                             "~",
                             "-rf",
                             "archive.tar.gz",
                             "two\nlines",
                             "tab\there"};
const size_t NamesWithControlCharacters = 2;

/// As long as a name may be.
const std::string LongName = std::string(251, 'n') + ".txt";

/// Enough for every kind of change to be possible, few enough for changes of both sides to meet.
const size_t UsualFileCount = 60;
const size_t UsualFolderCount = 15;
const size_t DepthLimit = 4;

size_t DepthOf(const std::string& path) {
    return static_cast<size_t>(std::count(path.begin(), path.end(), '/'));
}

/// What a client or a server has made to be moved into its place.
bool IsUnfinished(const std::string& path) {
    return path.find(".{SyncTemp}") != std::string::npos || path.find(".davfs.tmp") != std::string::npos;
}

}  // namespace

RandomChanges::RandomChanges(const std::string& folder, const std::string& side, Random& random,
                             std::unique_ptr<IFolderWriter> writer)
    : _folder(folder), _side(side), _random(random), _writer(std::move(writer)), _nameCount(std::size(Names)) {}

void RandomChanges::LeaveControlCharactersOut() {
    _nameCount = std::size(Names) - NamesWithControlCharacters;
}

void RandomChanges::Change() {
    const Tree tree = _Look();
    switch (_Below(20)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
            return tree.files.size() < UsualFileCount ? _MakeFile(tree) : _Delete(tree);
        case 5:
            return tree.folders.size() < UsualFolderCount ? _MakeFolder(tree) : _DeleteFolder(tree);
        case 6:
        case 7:
        case 8:
        case 9:
            return _Modify(_AnyOf(tree.files), false);
        case 10:
        case 11:
            return _Modify(_AnyOf(tree.files), true);
        case 12:
        case 13:
            return _Touch(tree);
        case 14:
        case 15:
            return _Delete(tree);
        case 16:
        case 17:
            return _Rename(tree);
        case 18:
            return _FileToFolder(tree);
        default:
            return _FolderToFile(tree);
    }
}

RandomChanges::Tree RandomChanges::_Look() const {
    Tree tree;
    tree.folders.emplace_back();
    for (auto entry = fs::recursive_directory_iterator(_folder); entry != fs::recursive_directory_iterator(); ++entry) {
        const std::string path = entry->path().string().substr(_folder.size() + 1);
        const bool isOfServer = path == ".ovsync-service" || entry->path().filename() == ".DAV";
        if (isOfServer || path == ".ovsync" || fs::exists(entry->path() / ".ovsync")) {
            entry.disable_recursion_pending();
        } else if (IsUnfinished(path)) {
            // No file of a person.
            continue;
        } else if (entry->is_directory()) {
            tree.folders.push_back(path);
        } else {
            tree.files.push_back(path);
        }
    }
    // The order of a folder on the disk is nobody's, and a seed has to give the same again.
    std::sort(tree.files.begin(), tree.files.end());
    std::sort(tree.folders.begin(), tree.folders.end());
    return tree;
}

size_t RandomChanges::_Below(size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(_random);
}

std::string RandomChanges::_AnyOf(const std::vector<std::string>& paths) {
    return paths.empty() ? std::string() : paths[_Below(paths.size())];
}

std::string RandomChanges::_FreePath(const Tree& tree) {
    const std::string folder = _AnyOf(tree.folders);
    const size_t number = _Below(_nameCount + 1);
    const std::string name = number < _nameCount ? Names[number] : LongName;
    const std::string path = folder.empty() ? name : folder + "/" + name;
    return DepthOf(path) > DepthLimit || fs::exists(fs::symlink_status(_At(path))) ? std::string() : path;
}

std::string RandomChanges::_NewContent(size_t size) {
    std::string content = _side + " " + std::to_string(++_number) + " ";
    content.resize(std::max(content.size(), size), '.');
    return content;
}

void RandomChanges::Note(const std::string& action, const std::string& path) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count() % 100000;
    _journal += std::to_string(milliseconds / 1000) + "." + std::to_string(milliseconds % 1000) + " " + _side + " " +
                action + " [" + path + "]\n";
}

void RandomChanges::Remove(const std::string& path) {
    Note("removes", path);
    _writer->Remove(path, _retired);
}

void RandomChanges::Modify(const std::string& path) {
    _Modify(path, false);
}

void RandomChanges::_Write(const std::string& path, const std::string& content) {
    Note("writes " + content.substr(0, 12), path);
    if (_writer->Write(path, content, _retired) && !content.empty()) {
        _written.emplace(content, path);
    }
}

void RandomChanges::_MakeFile(const Tree& tree) {
    if (const std::string path = _FreePath(tree); !path.empty()) {
        const size_t kind = _Below(10);
        _Write(path, kind == 0 ? "" : _NewContent(kind == 1 ? 70000 : _Below(200)));
    }
}

void RandomChanges::_MakeFolder(const Tree& tree) {
    if (const std::string path = _FreePath(tree); !path.empty()) {
        _writer->MakeFolder(path);
    }
}

void RandomChanges::_Modify(const std::string& path, bool keepsSize) {
    if (path.empty()) {
        return;
    }
    const size_t size = fs::file_size(_At(path));
    const bool becomesEmpty = !keepsSize && _Below(10) == 0;
    _Write(path, becomesEmpty ? "" : _NewContent(keepsSize ? size : size / 2 + _Below(100)));
}

void RandomChanges::_Touch(const Tree& tree) {
    if (const std::string path = _AnyOf(tree.files); !path.empty()) {
        _writer->Touch(path, std::chrono::seconds(_Below(100000)));
    }
}

void RandomChanges::_Delete(const Tree& tree) {
    if (const std::string path = _AnyOf(tree.files); !path.empty()) {
        Remove(path);
    }
}

void RandomChanges::_DeleteFolder(const Tree& tree) {
    if (const std::string folder = _AnyOf(tree.folders); !folder.empty()) {
        Remove(folder);
    }
}

void RandomChanges::_Rename(const Tree& tree) {
    const std::string from = _Below(4) == 0 ? _AnyOf(tree.folders) : _AnyOf(tree.files);
    const std::string to = _FreePath(tree);
    const bool isInItself = to.compare(0, from.size() + 1, from + "/") == 0;
    if (!from.empty() && !to.empty() && !isInItself) {
        Note("renames [" + from + "] to", to);
        _writer->Rename(from, to);
    }
}

void RandomChanges::_FileToFolder(const Tree& tree) {
    const std::string path = _AnyOf(tree.files);
    if (!path.empty() && DepthOf(path) < DepthLimit) {
        Remove(path);
        _writer->MakeFolder(path);
        _Write(path + "/inside", _NewContent(0));
    }
}

void RandomChanges::_FolderToFile(const Tree& tree) {
    if (const std::string path = _AnyOf(tree.folders); !path.empty() && _Below(3) == 0) {
        Remove(path);
        _Write(path, _NewContent(0));
    }
}

}  // namespace syncproof
