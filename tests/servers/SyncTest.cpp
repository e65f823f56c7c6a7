#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "tests/servers/ServersTest.h"

namespace servers {
namespace {

/// The files of `tree` that a change of `kind`, 0 to 5, falls on.
std::vector<std::string> FilesForChange(const FolderImage& tree, int kind) {
    std::vector<std::string> files;
    int number = 0;
    for (const auto& [path, content] : tree) {
        if (path.back() != '/' && number++ % 6 == kind) {
            files.push_back(path);
        }
    }
    return files;
}

/// Longer, shorter, of the same size, and empty.
std::string Changed(const std::string& content, int kind) {
    switch (kind) {
        case 0:
            return content + " and more";
        case 1:
            return content.substr(0, content.size() / 2) + "!";
        case 2:
            return std::string(content.rbegin(), content.rend()) + (content.empty() ? "no longer empty" : "");
        default:
            return "";
    }
}

TEST_P(ServersTest, PushesAFolderAndWhatChangesInIt) {
    Serve({});
    FolderImage tree = OddTree(GetParam());
    WriteHere(tree);
    ExpectRun("push", {"push", here.Path(), Url()});
    ExpectThere("push", tree);
    ExpectNothingToDo("push again", {"push", here.Path(), Url()});

    FolderImage changed = tree;
    for (int kind = 0; kind < 4; ++kind) {
        for (const std::string& path : FilesForChange(tree, kind)) {
            changed[path] = Changed(tree[path], kind);
        }
    }
    changed["new & folder/"] = "";
    changed["new & folder/new #file.txt"] = "new";
    WriteHere(changed);
    ExpectRun("push of changed files", {"push", here.Path(), Url()});
    ExpectThere("push of changed files", changed);
    ExpectNothingToDo("push again", {"push", here.Path(), Url()});
}

TEST_P(ServersTest, PushesNothingOverWhatSomebodyElseHasChanged) {
    Serve({});
    WriteHere({{"file.txt", "of the first push"}});
    ExpectRun("push", {"push", here.Path(), Url()});
    ChangeThere("PUT", "file.txt", "of the service");
    WriteHere({{"file.txt", "of this side"}});
    ExpectRun("push of a conflict", {"push", here.Path(), Url()}, 1);
    ExpectThere("push of a conflict", {{"file.txt", "of the service"}});
}

TEST_P(ServersTest, PushesIntoAFolderThatItMakes) {
    Serve({});
    WriteHere({{"f/", ""}, {"f/file.txt", "content"}});
    ExpectRun("push into a new folder", {"push", here.Path(), Url("new & folder/")});
    ExpectThere("push into a new folder",
                {{"new & folder/", ""}, {"new & folder/f/", ""}, {"new & folder/f/file.txt", "content"}});
}

TEST_P(ServersTest, KeepsTheExecutableBitWhereItCan) {
    const std::set<ServerKind> keepers = {ServerKind::StandIn, ServerKind::Apache, ServerKind::ApacheByDefault,
                                          ServerKind::Lighttpd};
    Serve({});
    const std::string tool = here.Path() + "/tool";
    const std::string pulled = here.Path() + "/.pulled";
    const auto bitOf = [](const std::string& path) {
        return access(path.c_str(), X_OK) == 0 ? "it runs" : "it does not";
    };
    for (const bool bit : {true, false}) {
        WriteHere({{"tool", bit ? "runs" : "runs no longer"}});
        ASSERT_EQ(chmod(tool.c_str(), bit ? 0755 : 0644), 0);
        ExpectRun("push of a program", {"push", "--exclude", ".*", here.Path(), Url()});
        const std::string expected = bit && keepers.count(GetParam()) != 0 ? "it runs" : "it does not";
        ExpectRun("pull of a program", {"pull", Url(), pulled});
        ExpectEqual("pull of a program", expected, bitOf(pulled + "/tool"));
        ExpectRun("get of a program", {"get", Url("tool"), ".got"});
        ExpectEqual("get of a program", expected, bitOf(here.Path() + "/.got"));
    }
}

TEST_P(ServersTest, PullsAFolderAndWhatChangesInIt) {
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    ExpectRun("pull", {"pull", Url(), here.Path()});
    ExpectEqual("pull", tree, ImageHere());
    ExpectNothingToDo("pull again", {"pull", Url(), here.Path()});

    for (int kind = 0; kind < 4; ++kind) {
        const std::string path = FilesForChange(tree, kind).front();
        tree[path] = Changed(tree[path], kind);
        ChangeThere("PUT", path, tree[path]);
    }
    ChangeThere("MKCOL", "new & folder/");
    ChangeThere("PUT", "new & folder/new #file.txt", "new");
    tree["new & folder/"] = "";
    tree["new & folder/new #file.txt"] = "new";
    ExpectRun("pull of changed files", {"pull", Url(), here.Path()});
    ExpectEqual("pull of changed files", tree, ImageHere());
    // Those were changed in this second, and may change in it once more.
    ExpectRun("pull again", {"pull", Url(), here.Path()});
    ExpectEqual("pull again", tree, ImageHere());

    const std::string gone = FilesForChange(tree, 4).front();
    ChangeThere("DELETE", gone);
    ExpectRun("pull --delete", {"pull", "--delete", Url(), here.Path()});
    tree.erase(gone);
    ExpectEqual("pull --delete", tree, ImageHere());
}

TEST_P(ServersTest, PullKeepsBothSidesOfAConflict) {
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    ExpectRun("pull", {"pull", Url(), here.Path()});
    const std::string both = FilesForChange(tree, 5).front();
    ChangeThere("PUT", both, "of the service");
    WriteHere({{both, "of this side"}});
    tree[both] = "of this side";
    ExpectRun("conflict", {"pull", Url(), here.Path()}, 1);
    FolderImage after = ImageHere();
    const auto isCopy = [&tree](const auto& entry) { return tree.count(entry.first) == 0; };
    const auto copy = std::find_if(after.begin(), after.end(), isCopy);
    ExpectEqual("conflict", "of the service", copy == after.end() ? "no copy" : copy->second);
    if (copy != after.end()) {
        after.erase(copy);
    }
    ExpectEqual("conflict", tree, after);
}

}  // namespace
}  // namespace servers
