#include "tests/sync-proof/RandomChanges.h"

#include <fcntl.h>
#include <stdio.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/FolderImage.h"

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
                             "two\nlines",
                             "tab\there",
                             "plus+and&",
                             "a:b|c*d",
                             "~",
                             "-rf",
                             "archive.tar.gz"};

/// As long as a name may be.
const std::string LongName = std::string(251, 'n') + ".txt";

/// Enough for every kind of change to be possible, few enough for changes of both sides to meet.
const size_t UsualFileCount = 60;
const size_t UsualFolderCount = 15;
const size_t DepthLimit = 4;

size_t DepthOf(const std::string& path) {
    return static_cast<size_t>(std::count(path.begin(), path.end(), '/'));
}

bool IsOfAPass(const std::string& path) {
    return path.find(".{SyncTemp}") != std::string::npos;
}

/// False when the names do not allow it, because something else changes the folder meanwhile.
bool RenameAt(const std::string& from, const std::string& to, unsigned flags) {
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

}  // namespace

RandomChanges::RandomChanges(const std::string& folder, const std::string& side, Random& random, Writing writing)
    : _folder(folder), _side(side), _random(random), _writing(writing) {}

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
            return _Modify(tree, false);
        case 10:
        case 11:
            return _Modify(tree, true);
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
        if (path == ".ovsync" || path == ".ovsync-service") {
            entry.disable_recursion_pending();
        } else if (IsOfAPass(path)) {
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
    const size_t number = _Below(std::size(Names) + 1);
    const std::string name = number < std::size(Names) ? Names[number] : LongName;
    const std::string path = folder.empty() ? name : folder + "/" + name;
    return DepthOf(path) > DepthLimit || fs::exists(fs::symlink_status(_At(path))) ? std::string() : path;
}

std::string RandomChanges::_NewContent(size_t size) {
    std::string content = _side + " " + std::to_string(++_number) + " ";
    content.resize(std::max(content.size(), size), '.');
    return content;
}

void RandomChanges::_Write(const std::string& path, const std::string& content) {
    if (_writing == Writing::InPlace) {
        std::ofstream(_At(path), std::ios::binary) << content;
    } else {
        std::ofstream(_Elsewhere(), std::ios::binary) << content;
        // What comes out is what was overwritten, whoever put it there in the last moment.
        if (RenameAt(_Elsewhere(), _At(path), RENAME_EXCHANGE)) {
            _RetireElsewhere();
        } else if (!RenameAt(_Elsewhere(), _At(path), RENAME_NOREPLACE)) {
            fs::remove(_Elsewhere());
            return;
        }
    }
    if (!content.empty()) {
        _written.insert(content);
    }
}

void RandomChanges::_Remove(const std::string& path) {
    if (RenameAt(_At(path), _Elsewhere(), RENAME_NOREPLACE)) {
        _RetireElsewhere();
    }
}

void RandomChanges::_RetireElsewhere() {
    if (fs::is_directory(_Elsewhere())) {
        for (const auto& [path, content] : ReadFolder(_Elsewhere())) {
            // The content that a pass was about to put in place is nobody's to delete.
            if (!IsOfAPass(path) || content.rfind(_side + " ", 0) == 0) {
                _retired.insert(content);
            }
        }
    } else {
        _retired.insert(service::test::ReadFile(_Elsewhere()).value_or(""));
    }
    fs::remove_all(_Elsewhere());
}

void RandomChanges::_MakeFile(const Tree& tree) {
    if (const std::string path = _FreePath(tree); !path.empty()) {
        const size_t kind = _Below(10);
        _Write(path, kind == 0 ? "" : _NewContent(kind == 1 ? 70000 : _Below(200)));
    }
}

void RandomChanges::_MakeFolder(const Tree& tree) {
    if (const std::string path = _FreePath(tree); !path.empty()) {
        fs::create_directory(_At(path));
    }
}

void RandomChanges::_Modify(const Tree& tree, bool keepsSize) {
    const std::string path = _AnyOf(tree.files);
    if (path.empty()) {
        return;
    }
    if (_writing == Writing::InPlace) {
        _retired.insert(service::test::ReadFile(_At(path)).value_or(""));
    }
    const size_t size = fs::file_size(_At(path));
    const bool becomesEmpty = !keepsSize && _Below(10) == 0;
    _Write(path, becomesEmpty ? "" : _NewContent(keepsSize ? size : size / 2 + _Below(100)));
}

void RandomChanges::_Touch(const Tree& tree) {
    if (const std::string path = _AnyOf(tree.files); !path.empty()) {
        const auto age = std::chrono::seconds(_Below(100000));
        fs::last_write_time(_At(path), fs::file_time_type::clock::now() - age);
    }
}

void RandomChanges::_Delete(const Tree& tree) {
    if (const std::string path = _AnyOf(tree.files); !path.empty()) {
        _Remove(path);
    }
}

void RandomChanges::_DeleteFolder(const Tree& tree) {
    if (const std::string folder = _AnyOf(tree.folders); !folder.empty()) {
        _Remove(folder);
    }
}

void RandomChanges::_Rename(const Tree& tree) {
    const std::string from = _Below(4) == 0 ? _AnyOf(tree.folders) : _AnyOf(tree.files);
    const std::string to = _FreePath(tree);
    const bool isInItself = to.compare(0, from.size() + 1, from + "/") == 0;
    if (!from.empty() && !to.empty() && !isInItself) {
        RenameAt(_At(from), _At(to), RENAME_NOREPLACE);
    }
}

void RandomChanges::_FileToFolder(const Tree& tree) {
    const std::string path = _AnyOf(tree.files);
    if (!path.empty() && DepthOf(path) < DepthLimit) {
        _Remove(path);
        fs::create_directory(_At(path));
        _Write(path + "/inside", _NewContent(0));
    }
}

void RandomChanges::_FolderToFile(const Tree& tree) {
    if (const std::string path = _AnyOf(tree.folders); !path.empty() && _Below(3) == 0) {
        _Remove(path);
        _Write(path, _NewContent(0));
    }
}

}  // namespace syncproof
