#include "tests/sync-proof/Changes.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace syncproof {
namespace {

namespace fs = std::filesystem;

bool IsTemporary(const std::string& path) {
    const std::string ending = ".{SyncTemp}";
    return path.size() > ending.size() && path.compare(path.size() - ending.size(), ending.size(), ending) == 0;
}

bool IsCopy(const std::string& path) {
    return path.find(" (from the service, ") != std::string::npos;
}

}  // namespace

std::string Changes::_Large() const {
    return _Text("large") + std::string(300000, static_cast<char>('a' + _number % 26));
}

void Changes::_Remember() {
    _here = _sides.ImageHere();
    _there = _sides.ImageThere();
}

void Changes::MakeForPull() {
    const std::string last = std::to_string(_number);
    const std::string next = std::to_string(++_number);
    const auto& there = _sides.there;
    fs::remove(there / ("new " + last));
    fs::remove_all(there / ("folder " + last));
    fs::remove_all(there / "file or folder");
    there.Write("changed", _Text("changed"));
    there.Write("empty or not", _number % 2 == 0 ? "" : _Text("not empty"));
    there.Write("large", _Large());
    there.Write("new " + next, _Text("new"));
    there.Write("folder " + next + "/inner/file", _Text("in a folder"));
    there.Write(_number % 2 == 0 ? "file or folder" : "file or folder/inside", _Text("file or folder"));
    there.Write("both", _Text("both, there"));
    _sides.here.Write("both", _Text("both, here"));
    _sides.here.Write("mine", _Text("mine"));
    _Remember();
    _wanted = _there;
    _wanted["both"] = _here["both"];
    _wanted["mine"] = _here["mine"];
}

void Changes::MakeForPush() {
    const std::string next = std::to_string(++_number);
    const auto& here = _sides.here;
    here.Write("changed", _Text("changed"));
    here.Write("empty or not", _number % 2 == 0 ? "" : _Text("not empty"));
    here.Write("large", _Large());
    here.Write("new " + next, _Text("new"));
    here.Write("folder " + next + "/inner/file", _Text("in a folder"));
    here.Write("both", _Text("both, here"));
    _sides.there.Write("both", _Text("both, there"));
    _sides.there.Write("theirs", _Text("theirs"));
    _Remember();
    _wanted = _here;
    _wanted["both"] = _there["both"];
    _wanted["theirs"] = _there["theirs"];
}

void Changes::MakeForSync() {
    const std::string last = std::to_string(_number);
    const std::string next = std::to_string(++_number);
    _Remember();
    _wanted.clear();
    for (const auto& [path, content] : _here) {
        if (path.back() != '/') {
            _wanted[path] = content;
        }
    }
    const auto changeSide = [&](const auto& side, const auto& other, const std::string& name) {
        const auto write = [this, &side](const std::string& path, const std::string& content) {
            side.Write(path, content);
            _wanted[path] = content;
        };
        write(name + "changed", _Text("changed"));
        write(name + "empty or not", _number % 2 == 0 ? "" : _Text("not empty"));
        write(name + "large", _Large());
        write(name + "new " + next, _Text("new"));
        write(name + "folder " + next + "/inner/file", _Text("in a folder"));
        fs::remove(other / (name + "new " + last));
        _wanted.erase(name + "new " + last);
        fs::remove_all(other / (name + "folder " + last));
        _wanted.erase(name + "folder " + last + "/inner/file");
        const std::string moved = name + "moved " + next;
        const std::string before = name + "moved " + last;
        if (fs::exists(side / before)) {
            fs::rename(side / before, side / moved);
            _wanted.erase(before + "/inner/file");
            _wanted[moved + "/inner/file"] = "moved " + name;
        } else {
            write(moved + "/inner/file", "moved " + name);
        }
    };
    changeSide(_sides.here, _sides.there, "of here ");
    changeSide(_sides.there, _sides.here, "of there ");
    const FolderImage files = _wanted;
    for (const auto& [path, content] : files) {
        for (size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', slash + 1)) {
            _wanted[path.substr(0, slash + 1)] = "";
        }
    }
}

void Changes::ExpectOldOrNew(const FolderImage& before, const FolderImage& now) const {
    for (const auto& [path, content] : now) {
        const auto old = before.find(path);
        const auto wanted = _wanted.find(path);
        const bool isOld = old != before.end() && old->second == content;
        const bool isNew = wanted != _wanted.end() && wanted->second == content;
        const bool isCopy = IsCopy(path) && content == _there.at("both");
        EXPECT_TRUE(isOld || isNew || isCopy || IsTemporary(path)) << path << " is neither old nor new";
    }
    for (const auto& [path, content] : before) {
        EXPECT_TRUE(_wanted.count(path) == 0 || now.count(path) != 0) << path << " is gone";
    }
}

void Changes::ExpectPulled() const {
    FolderImage here = _sides.ImageHere();
    int copies = 0;
    for (auto file = here.begin(); file != here.end();) {
        // A pass that was killed right after it made one does not know of it.
        const bool isCopy = IsCopy(file->first) && file->second == _there.at("both");
        copies += isCopy ? 1 : 0;
        file = isCopy ? here.erase(file) : std::next(file);
    }
    EXPECT_GE(copies, 1);
    EXPECT_EQ(Differences(here, _wanted), "");
    EXPECT_EQ(Differences(_sides.ImageThere(), _there), "");
    EXPECT_EQ(_sides.Leftovers(), "");
}

void Changes::ExpectPushed() const {
    EXPECT_EQ(Differences(_sides.ImageHere(), _here), "");
    EXPECT_EQ(Differences(_sides.ImageThere(), _wanted), "");
    EXPECT_EQ(_sides.Leftovers(), "");
}

void Changes::ExpectSynced() const {
    EXPECT_EQ(Differences(_sides.ImageHere(), _wanted), "");
    EXPECT_EQ(Differences(_sides.ImageThere(), _wanted), "");
    EXPECT_EQ(_sides.Leftovers(), "");
}

void Changes::Settle() {
    for (const auto& [path, content] : _sides.ImageHere()) {
        if (IsCopy(path)) {
            fs::remove(_sides.here / path);
        }
    }
    fs::remove(_sides.here / "both");
    const auto pull = _sides.Pull({"--delete"});
    EXPECT_EQ(pull->ExitCode(), 0) << pull->Text();
}

}  // namespace syncproof
