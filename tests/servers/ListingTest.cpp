#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/servers/ServersTest.h"

namespace servers {
namespace {

bool IsFolder(const std::string& path) {
    return !path.empty() && path.back() == '/';
}

std::string NameOf(const std::string& path) {
    return path.substr(path.rfind('/', path.size() - 2) + 1);
}

bool LiesIn(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0;
}

/// `tree` as it is seen from `folder`; what lies in a folder of it only if `isDeep`.
FolderImage Below(const FolderImage& tree, const std::string& folder, bool isDeep) {
    FolderImage below;
    for (const auto& [path, content] : tree) {
        if (LiesIn(path, folder)) {
            const std::string rest = path.substr(folder.size());
            if (isDeep || rest.find('/') >= rest.size() - 1) {
                below[rest] = content;
            }
        }
    }
    return below;
}

/// What is compared: a line each, or what is said of a path. In no order, for that is for people.
using Entries = FolderImage;

Entries Lines(const std::string& text) {
    Entries lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines[line] = lines.count(line) == 0 ? "" : "twice";
    }
    return lines;
}

Entries Lines(const FolderImage& tree) {
    std::string text;
    for (const auto& [path, content] : tree) {
        text += path + "\n";
    }
    return Lines(text);
}

std::string Description(const std::string& path, const std::string& name, const std::string& content) {
    return IsFolder(path) ? "folder " + name.substr(0, name.size() - 1)
                          : "file " + name + ", " + std::to_string(content.size()) + " bytes";
}

/// `below` as a listing of `folder` has it.
Entries Described(const FolderImage& below, const std::string& folder) {
    Entries entries;
    for (const auto& [path, content] : below) {
        entries[folder + path] = Description(path, path, content);
    }
    return entries;
}

/// The entries in the array `name` of `text`, or in `text` itself where `name` is empty.
Entries DescribedByJson(const std::string& text, const std::string& name = "") {
    nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
    if (!name.empty() && json.is_object()) {
        json = json[name];
    }
    Entries entries;
    for (const auto& entry : json.is_array() ? json : nlohmann::json::array()) {
        const std::string type = entry.value("type", "");
        const bool isFolder = type == "folder";
        std::string& description = entries[entry.value("serverPath", "") + (isFolder ? "/" : "")];
        description += type + " " + entry.value("name", "");
        description += isFolder ? "" : ", " + std::to_string(entry.value("size", -1LL)) + " bytes";
    }
    return entries;
}

TEST_P(ServersTest, ListsAndDescribesFoldersAndFiles) {
    const FolderImage tree = OddTree(GetParam());
    Serve(tree);
    FolderImage folders = tree;
    folders[""] = "";
    for (const auto& [path, content] : folders) {
        if (path.empty() || IsFolder(path)) {
            const FolderImage below = Below(tree, path, false);
            ExpectEqual("ls", Lines(below), Lines(ExpectRun("ls", {"ls", Url(path)})));
            const std::string json = ExpectRun("ls --json", {"ls", "--json", Url(path)});
            ExpectEqual("ls --json", Described(below, path), DescribedByJson(json));
        }
    }
    for (const auto& [path, content] : tree) {
        const std::string check = IsFolder(path) ? "stat of a folder" : "stat of a file";
        const std::string json = ExpectRun(check, {"stat", "--json", Url(path)});
        ExpectEqual(check, {{path, Description(path, NameOf(path), content)}}, DescribedByJson("[" + json + "]"));
        if (!IsFolder(path)) {
            ExpectEqual("ls of a file", NameOf(path) + "\n", ExpectRun("ls of a file", {"ls", Url(path)}));
        }
    }
    const std::string json = ExpectRun("stat without a slash", {"stat", "--json", Url("deep")});
    ExpectEqual("stat without a slash", {{"deep/", "folder deep"}}, DescribedByJson("[" + json + "]"));
    for (const std::string command : {"ls", "stat"}) {
        for (const char* missing : {"missing", "missing/", "missing/below/"}) {
            ExpectRun(command + " of what is missing", {command, Url(missing)}, 1);
        }
    }
}

TEST_P(ServersTest, ListsAndCountsATree) {
    const FolderImage tree = OddTree(GetParam());
    Serve(tree);
    for (const std::string folder : {"", "deep/"}) {
        const FolderImage below = Below(tree, folder, true);
        ExpectEqual("tree", Lines(below), Lines(ExpectRun("tree", {"tree", Url(folder)})));
        const std::string json = ExpectRun("tree --json", {"tree", "--json", Url(folder)});
        ExpectEqual("tree --json", Described(below, folder), DescribedByJson(json, "entries"));
        std::size_t files = 0;
        std::size_t bytes = 0;
        for (const auto& [path, content] : below) {
            files += IsFolder(path) ? 0 : 1;
            bytes += content.size();
        }
        const auto counted = nlohmann::json::parse(ExpectRun("du", {"du", "--json", Url(folder)}), nullptr, false);
        Expect("du", counted == nlohmann::json{{"files", files}, {"bytes", bytes}} ? "" : counted.dump());
    }
    for (const std::string command : {"tree", "du"}) {
        ExpectRun(command + " of what is missing", {command, Url("missing/")}, 1);
    }
}

}  // namespace
}  // namespace servers
