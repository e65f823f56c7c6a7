#include <filesystem>

#include "tests/servers/ServersTest.h"

namespace servers {
namespace {

FolderImage FilesOf(const FolderImage& tree) {
    FolderImage files;
    for (const auto& [path, content] : tree) {
        if (path.back() != '/') {
            files[path] = content;
        }
    }
    return files;
}

TEST_P(ServersTest, GetsFilesOneByOne) {
    const FolderImage tree = OddTree(GetParam());
    Serve(tree);
    for (const auto& [path, content] : FilesOf(tree)) {
        const std::string name = path.substr(path.rfind('/') + 1);
        ExpectRun("get", {"get", Url(path)});
        ExpectEqual("get", FolderImage{{name, content}}, ImageHere());
        ExpectRun("get to a file", {"get", Url(path), "./" + name});
        ExpectEqual("get to a file", FolderImage{{name, content}}, ImageHere());
        if (here.Has(name)) {
            std::filesystem::remove(here / name);
        }
    }
    const std::string& content = tree.at("100%.txt");
    ExpectEqual("get to standard output", content, ExpectRun("get to standard output", {"get", Url("100%.txt"), "-"}));
    ExpectEqual("cat", content, ExpectRun("cat", {"cat", Url("100%.txt")}));
    ExpectRun("get of what is missing", {"get", Url("missing")}, 1);
    ExpectEqual("get of what is missing", FolderImage{}, ImageHere());
}

TEST_P(ServersTest, PutsFilesOneByOne) {
    FolderImage tree = OddTree(GetParam());
    FolderImage there = tree;
    for (const auto& [path, content] : FilesOf(tree)) {
        there.erase(path);
    }
    Serve(there);
    WriteHere(tree);
    for (const auto& [path, content] : FilesOf(tree)) {
        ExpectRun("put", {"put", "./" + path, Url(path)});
    }
    ExpectThere("put", tree);
    const std::string large(5000000, 'x');
    WriteHere({{"large", large}});
    ExpectRun("put over a file", {"put", "large", Url("plain.txt")});
    tree["plain.txt"] = large;
    ExpectThere("put over a file", tree);
    ExpectRun("put below what is missing", {"put", "large", Url("missing/large")}, 1);
    ExpectThere("put below what is missing", tree);
}

TEST_P(ServersTest, CopiesFoldersAndFiles) {
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    for (const auto& [path, content] : FilesOf(tree)) {
        const std::string to = "plain/" + std::to_string(content.size()) + path.substr(0, 200);
        if (path.find('/') == std::string::npos) {
            ExpectRun("cp of a file", {"cp", Url(path), Url(to)});
            tree[to] = content;
        }
    }
    ExpectThere("cp of a file", tree);
    ExpectRun("cp of a folder", {"cp", Url("deep/"), Url("plain/deep too/")});
    for (const auto& [path, content] : FolderImage(tree)) {
        if (path.compare(0, 5, "deep/") == 0) {
            tree["plain/deep too/" + path.substr(5)] = content;
        }
    }
    ExpectThere("cp of a folder", tree);
}

}  // namespace
}  // namespace servers
