#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <future>
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

TEST_P(ServersTest, PushesNothingOverWhatSomebodyElseWritesMeanwhile) {
    Serve({{"file.txt", "of the service"}});
    ExpectRun("pull", {"pull", Url(), here.Path()});
    WriteHere({{"file.txt", std::string(2097152, 'x')}});
    auto push = std::async(std::launch::async, [this] {
        return Ovsync({"push", "--bandwidth", "1600K", here.Path(), Url()});
    });
    // Some of these fall into the upload.
    int number = 0;
    std::string stored;
    while (push.wait_for(std::chrono::milliseconds(400)) != std::future_status::ready) {
        service::test::HttpClient client(Port());
        const std::string content = "of somebody else " + std::to_string(++number);
        const long status = client.Send("PUT", "/file.txt", {}, content).status;
        stored = status >= 200 && status < 300 ? content : stored;
    }
    if (stored.empty()) {
        const Run run = push.get();
        Expect("push meanwhile", run.exitCode == 0 ? "" : run.output + run.errors);
    } else {
        ExpectThere("push meanwhile", {{"file.txt", stored}});
    }
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

TEST_P(ServersTest, KeepsTheDateWhereItCan) {
    const std::set<ServerKind> keepers = {ServerKind::StandIn, ServerKind::Apache, ServerKind::ApacheByDefault,
                                          ServerKind::Lighttpd};
    const bool keeps = keepers.count(GetParam()) != 0;
    const std::string pulled = here.Path() + "/.pulled";
    const auto dateOf = [](const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 && status.st_mtime == 1600000000 ? "that of the file" : "another one";
    };
    const auto expectDate = [&](const char* check, bool isKept) {
        const char* const expected = isKept ? "that of the file" : "another one";
        ExpectRun(check, {"pull", Url(), pulled});
        ExpectEqual(check, expected, dateOf(pulled + "/old"));
        ExpectRun(check, {"get", Url("old"), ".got"});
        ExpectEqual(check, expected, dateOf(here.Path() + "/.got"));
    };
    Serve({});
    WriteHere({{"old", "of that year"}});
    const timespec times[] = {{1600000000, 0}, {1600000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (here.Path() + "/old").c_str(), times, 0), 0);
    ExpectRun("push of an old file", {"push", "--exclude", ".*", here.Path(), Url()});
    expectDate("pull of an old file", keeps);
    ExpectNothingToDo("push again", {"push", "--exclude", ".*", here.Path(), Url()});
    ExpectRun("mv of an old file", {"mv", Url("old"), Url("moved")});
    ExpectRun("mv back", {"mv", Url("moved"), Url("old")});
    ChangeThere("PUT", "old", "of this year");
    expectDate("pull of what somebody else changed", false);
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

TEST_P(ServersTest, SyncsWhatChangesOnEitherSide) {
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    WriteHere({{"mine/", ""}, {"mine/of this side.txt", "mine"}});
    tree["mine/"] = "";
    tree["mine/of this side.txt"] = "mine";
    ExpectRun("sync", {"sync", here.Path(), Url()});
    ExpectEqual("sync", tree, ImageHere());
    ExpectThere("sync", tree);
    ExpectRun("sync again", {"sync", here.Path(), Url()});
    ExpectNothingToDo("sync again", {"sync", here.Path(), Url()});

    for (int kind = 0; kind < 4; ++kind) {
        const std::string path = FilesForChange(tree, kind).front();
        tree[path] = Changed(tree[path], kind);
        if (kind % 2 == 0) {
            ChangeThere("PUT", path, tree[path]);
        } else {
            WriteHere({{path, tree[path]}});
        }
    }
    ChangeThere("MKCOL", "theirs & new/");
    ChangeThere("PUT", "theirs & new/new #file.txt", "new");
    tree["theirs & new/"] = "";
    tree["theirs & new/new #file.txt"] = "new";
    WriteHere({{"mine/new/", ""}, {"mine/new/file.txt", "new here"}});
    tree["mine/new/"] = "";
    tree["mine/new/file.txt"] = "new here";
    const std::string gone = FilesForChange(tree, 4).front();
    ChangeThere("DELETE", gone);
    tree.erase(gone);
    const std::string goneHere = FilesForChange(tree, 5).front();
    ASSERT_EQ(unlink((here / goneHere).c_str()), 0);
    tree.erase(goneHere);
    ExpectRun("sync of changes", {"sync", here.Path(), Url()});
    ExpectEqual("sync of changes", tree, ImageHere());
    ExpectThere("sync of changes", tree);
    // Those were changed in this second, and may change in it once more.
    ExpectRun("sync again", {"sync", here.Path(), Url()});
    ExpectEqual("sync again", tree, ImageHere());
    ExpectThere("sync again", tree);
}

TEST_P(ServersTest, SyncsByNoMoreRequestsThanChangesNeed) {
    if (GetParam() != ServerKind::SabreTags) {
        GTEST_SKIP() << "It does not tell what it was asked";
    }
    FolderImage tree = OddTree(GetParam());
    Serve(tree);
    const Words sync{"sync", here.Path(), Url()};
    const auto asked = [&] {
        const size_t before = Asked().size();
        ExpectRun("sync", sync);
        Words requests = Asked();
        requests.erase(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(before));
        std::sort(requests.begin(), requests.end());
        return requests;
    };
    ExpectRun("sync", sync);
    EXPECT_EQ(asked(), Words({"PROPFIND /"}));
    tree["deep/with space/new.txt"] = "new";
    ChangeThere("PUT", "deep/with space/new.txt", "new");
    EXPECT_EQ(asked(), Words({"GET /deep/with%20space/new.txt", "PROPFIND /", "PROPFIND /", "PROPFIND /deep/",
                              "PROPFIND /deep/with%20space/"}));
    EXPECT_EQ(asked(), Words({"PROPFIND /"}));
    ExpectEqual("sync", tree, ImageHere());
    // What a pass itself changed is looked at once more by the next one, and a file that was sent a moment ago
    // compared.
    tree["deep/mine.txt"] = "mine";
    WriteHere({{"deep/mine.txt", "mine"}});
    ExpectRun("sync", sync);
    EXPECT_EQ(asked(), Words({"GET /deep/mine.txt", "PROPFIND /", "PROPFIND /", "PROPFIND /deep/"}));
    EXPECT_EQ(asked(), Words({"PROPFIND /"}));
    ExpectThere("sync", tree);
}

}  // namespace
}  // namespace servers
