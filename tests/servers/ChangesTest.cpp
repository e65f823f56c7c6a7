#include "tests/servers/ServersTest.h"

namespace servers {
namespace {

/// What lies in the root.
std::vector<std::string> TopOf(const FolderImage& tree) {
    std::vector<std::string> top;
    for (const auto& [path, content] : tree) {
        if (path.find('/') >= path.size() - 1) {
            top.push_back(path);
        }
    }
    return top;
}

/// `tree` after what lies at `from`, with what lies in it, was moved to `to`.
FolderImage Moved(const FolderImage& tree, const std::string& from, const std::string& to) {
    FolderImage moved;
    for (const auto& [path, content] : tree) {
        const bool goes = path == from || (from.back() == '/' && path.compare(0, from.size(), from) == 0);
        moved[goes ? to + path.substr(from.size()) : path] = content;
    }
    return moved;
}

/// `tree` without what lies at `gone` and in it.
FolderImage Without(const FolderImage& tree, const std::string& gone) {
    FolderImage rest = tree;
    for (const auto& [path, content] : tree) {
        if (path == gone || (gone.back() == '/' && path.compare(0, gone.size(), gone) == 0)) {
            rest.erase(path);
        }
    }
    return rest;
}

TEST_P(ServersTest, MakesFoldersAndThoseAboveThem) {
    FolderImage tree;
    Serve(tree);
    ExpectRun("mkdir", {"mkdir", Url("folder")});
    tree["folder/"] = "";
    ExpectThere("mkdir", tree);
    for (const auto& [path, content] : OddTree(GetParam())) {
        if (path.back() == '/') {
            ExpectRun("mkdir -p", {"mkdir", "-p", Url("folder/above/" + path)});
            tree["folder/above/" + path] = "";
        }
    }
    tree["folder/above/"] = "";
    ExpectThere("mkdir -p", tree);
    ExpectRun("mkdir of a folder that is there", {"mkdir", Url("folder/")});
    ExpectRun("mkdir -p of a folder that is there", {"mkdir", "-p", Url("folder/above/")});
    ExpectRun("mkdir below what is missing", {"mkdir", Url("missing/folder")}, 1);
    ExpectThere("mkdir of a folder that is there", tree);
}

TEST_P(ServersTest, MovesFoldersAndFiles) {
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    for (const std::string& from : TopOf(tree)) {
        // One name is as long as it can be.
        const std::string to = from.size() > 200 ? "m" + from.substr(2) : "moved " + from;
        const std::string check = from.back() == '/' ? "mv of a folder" : "mv of a file";
        ExpectRun(check, {"mv", Url(from), Url(to)});
        tree = Moved(tree, from, to);
        ExpectThere(check, tree);
    }
    ExpectRun("mv onto a file", {"mv", Url("moved plain.txt"), Url("moved ~")}, 1);
    ExpectRun("mv onto a folder", {"mv", Url("moved plain/"), Url("moved empty/")}, 1);
    ExpectRun("mv of what is missing", {"mv", Url("missing"), Url("elsewhere")}, 1);
    ExpectThere("mv onto something", tree);
}

TEST_P(ServersTest, RemovesFoldersAndFiles) {
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    ExpectRun("rm of a folder with something in it", {"rm", Url("deep/")}, 1);
    ExpectRun("rm of what is missing", {"rm", Url("missing")}, 1);
    ExpectThere("rm of a folder with something in it", tree);
    for (const std::string& path : TopOf(tree)) {
        const bool isFolder = path.back() == '/';
        const FolderImage rest = Without(tree, path);
        const bool isEmpty = tree.size() - rest.size() == 1;
        const std::string check = !isFolder ? "rm of a file" : isEmpty ? "rm of an empty folder" : "rm -r";
        ExpectRun(check, isEmpty ? Words{"rm", Url(path)} : Words{"rm", "-r", Url(path)});
        tree = rest;
        ExpectThere(check, tree);
    }
}

}  // namespace
}  // namespace servers
