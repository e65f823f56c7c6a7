#include "service/tree/ServiceTree.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "service/protocol/HttpError.h"
#include "tests/service/TemporaryFolder.h"

namespace service::tree {
namespace {

using Depth = protocol::Request::Depth;

class ServiceTreeTest : public testing::Test {
protected:
    ServiceTreeTest() { Restart(); }

    void Restart() {
        tree.reset();
        tree = std::make_unique<ServiceTree>(folder.Path(), "anna");
    }

    bool Put(const std::string& path, const std::string& content) {
        const auto upload = tree->NewUpload();
        upload->Write(content);
        return tree->Put(path, *upload, {}, "berta", none).isNew;
    }

    store::Resource Get(const std::string& path) {
        return tree->List({path}, Depth::Zero, {}).entries.front().resource;
    }

    std::vector<std::string> Names(const std::string& path, Depth depth = Depth::One) {
        std::vector<std::string> names;
        for (const auto& entry : tree->List({path}, depth, {}).entries) {
            names.push_back(entry.path);
        }
        return names;
    }

    std::int64_t LastChange(const std::string& path, Depth depth) { return tree->List({path}, depth, {}).lastChange; }

    // A moment that is later than every change before and earlier than every change after it.
    std::int64_t Moment() {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const std::int64_t now = tree->Now();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return now;
    }

    int StatusOf(const std::function<void()>& operation) {
        try {
            operation();
            return 0;
        } catch (const protocol::HttpError& error) {
            return error.Status();
        }
    }

    void Set(const std::string& path, const std::string& name, const std::string& value) {
        const std::string body = "<D:propertyupdate xmlns:D='DAV:' xmlns:u='urn:u'><D:set><D:prop><" + name + ">" +
                                 value + "</" + name + "></D:prop></D:set></D:propertyupdate>";
        for (const auto& outcome : tree->SetProperties(path, protocol::PropertyUpdate::Parse(body), none).outcomes) {
            EXPECT_EQ(outcome.status, 200) << outcome.reason;
        }
    }

    test::TemporaryFolder folder;
    protocol::Request plain;
    Preconditions none{plain};
    std::unique_ptr<ServiceTree> tree;
};

TEST_F(ServiceTreeTest, PutKeepsTheIdentityAndRaisesTheVersion) {
    EXPECT_TRUE(Put("f", "one"));
    const store::Resource first = Get("f");
    EXPECT_FALSE(Put("f", "two!"));
    const store::Resource second = Get("f");
    EXPECT_EQ(first.version, 1);
    EXPECT_EQ(second.version, 2);
    EXPECT_EQ(second.id, first.id);
    EXPECT_EQ(second.itemId, first.itemId);
    EXPECT_NE(second.VersionId(), first.VersionId());
    EXPECT_EQ(second.owner, "berta");
    EXPECT_EQ(folder.Read("f"), "two!");
}

TEST_F(ServiceTreeTest, MoveKeepsTheIdentityOfAllAndCopyDoesNot) {
    tree->MakeCollection({"a"}, "anna", none);
    Put("a/f", "x");
    Set("a/f", "u:color", "red");
    const store::Resource before = Get("a");
    const store::Resource file = Get("a/f");
    EXPECT_TRUE(tree->Move("a", "b", true, none));
    EXPECT_EQ(Get("b").id, before.id);
    EXPECT_EQ(Get("b/f").itemId, file.itemId);
    EXPECT_EQ(Get("b/f").version, file.version);
    EXPECT_EQ(StatusOf([&] { Get("a"); }), 404);

    Put("b/f", "y");
    EXPECT_TRUE(tree->Copy("b", "c", Depth::Infinity, true, "carla", none));
    EXPECT_NE(Get("c").id, before.id);
    EXPECT_NE(Get("c/f").itemId, file.itemId);
    EXPECT_EQ(Get("c/f").version, 1);
    EXPECT_EQ(Get("c/f").owner, "carla");
    EXPECT_EQ(Get("c/f").parent, Get("c").id);
    EXPECT_EQ(folder.Read("c/f"), "y");
    const auto copied = tree->List({"c/f"}, Depth::Zero, {true, false}).entries.front().deadProperties;
    ASSERT_EQ(copied.size(), 1U);
    EXPECT_EQ(copied.front().name.name, "color");
}

TEST_F(ServiceTreeTest, CopyOfDepthZeroLeavesTheChildrenOut) {
    tree->MakeCollection({"a"}, "anna", none);
    Put("a/f", "x");
    tree->Copy("a", "b", Depth::Zero, true, "anna", none);
    EXPECT_THAT(Names("b"), testing::ElementsAre("b"));
}

TEST_F(ServiceTreeTest, MoveAndCopyReplaceWhatIsThere) {
    Put("f", "file");
    tree->MakeCollection({"d"}, "anna", none);
    Put("d/x", "x");
    EXPECT_EQ(StatusOf([&] { tree->Move("f", "d", false, none); }), 412);
    EXPECT_FALSE(tree->Copy("f", "d", Depth::Infinity, true, "anna", none));
    EXPECT_EQ(folder.Read("d"), "file");
    EXPECT_FALSE(tree->Move("d", "f", true, none));
    EXPECT_THAT(Names(""), testing::ElementsAre("", "f"));
    EXPECT_TRUE(std::filesystem::is_empty(folder / ".ovsync-service/work"));
}

TEST_F(ServiceTreeTest, NothingIsMovedOrCopiedIntoOrOverItself) {
    tree->MakeCollection({"a"}, "anna", none);
    tree->MakeCollection({"a/b"}, "anna", none);
    for (const char* to : {"a", "a/b/c", ""}) {
        EXPECT_EQ(StatusOf([&] { tree->Move("a", to, true, none); }), 403) << to;
        EXPECT_EQ(StatusOf([&] { tree->Copy("a", to, Depth::Infinity, true, "anna", none); }), 403) << to;
    }
    EXPECT_EQ(StatusOf([&] { tree->Move("a/b", "a", true, none); }), 403);
    EXPECT_EQ(StatusOf([&] { tree->Remove({""}, none); }), 403);
    EXPECT_THAT(Names("", Depth::Infinity), testing::ElementsAre("", "a", "a/b"));
}

TEST_F(ServiceTreeTest, FilesPutThereByHandShowUpAndVanish) {
    folder.Write("d/f", "abc");
    EXPECT_THAT(Names("", Depth::Infinity), testing::ElementsAre("", "d", "d/f"));
    EXPECT_EQ(Get("d/f").owner, "anna");
    EXPECT_EQ(Get("d/f").version, 1);
    const std::int64_t id = Get("d/f").id;
    Restart();
    EXPECT_EQ(Get("d/f").id, id);
    std::filesystem::remove_all(folder / "d");
    EXPECT_EQ(StatusOf([&] { Get("d/f"); }), 404);
    EXPECT_THAT(Names(""), testing::ElementsAre(""));
    folder.Write("d/f", "abc");
    EXPECT_GT(Get("d/f").id, id);
}

TEST_F(ServiceTreeTest, FilesChangedByHandGetANewVersion) {
    Put("f", "abc");
    const store::Resource before = Get("f");
    folder.Write("f", "abcd");
    const store::Resource longer = Get("f");
    EXPECT_EQ(longer.id, before.id);
    EXPECT_EQ(longer.version, 2);
    EXPECT_EQ(longer.size, 4);
    EXPECT_EQ(longer.md5, "");
    // The same size at another time, even an earlier one.
    std::filesystem::last_write_time(folder / "f",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(Get("f").version, 3);
    EXPECT_EQ(Get("f").version, 3);
}

TEST_F(ServiceTreeTest, FileThatBecomesAFolderIsAnotherResource) {
    Put("f", "abc");
    const store::Resource file = Get("f");
    std::filesystem::remove(folder / "f");
    std::filesystem::create_directory(folder / "f");
    EXPECT_TRUE(Get("f").isCollection);
    EXPECT_NE(Get("f").id, file.id);
}

TEST_F(ServiceTreeTest, SymbolicLinksAreNeitherSeenNorOverwritten) {
    std::filesystem::create_symlink("/etc", folder / "etc");
    std::filesystem::create_symlink("/etc/passwd", folder / "passwd");
    EXPECT_THAT(Names("", Depth::Infinity), testing::ElementsAre(""));
    EXPECT_EQ(StatusOf([&] { Get("etc/passwd"); }), 404);
    EXPECT_EQ(StatusOf([&] { Put("passwd", "x"); }), 403);
    EXPECT_EQ(StatusOf([&] { Put("etc/new", "x"); }), 409);
    EXPECT_EQ(StatusOf([&] { tree->MakeCollection({"etc"}, "anna", none); }), 403);
    EXPECT_EQ(StatusOf([&] { tree->Remove({"passwd"}, none); }), 404);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "passwd"));
}

TEST_F(ServiceTreeTest, RemovingAFolderDoesNotFollowItsLinks) {
    const test::TemporaryFolder outside;
    outside.Write("kept", "k");
    folder.Write("d/f", "");
    std::filesystem::create_symlink(outside.Path(), folder / "d/link");
    tree->Remove({"d"}, none);
    EXPECT_FALSE(folder.Has("d"));
    EXPECT_EQ(outside.Read("kept"), "k");
}

TEST_F(ServiceTreeTest, ChecksumIsComputedWhenItIsNeededAndKept) {
    folder.Write("f", "abc");
    auto listing = tree->List({"f"}, Depth::Zero, {});
    EXPECT_EQ(listing.entries.front().resource.md5, "");
    tree->CompleteChecksum(listing.entries.front());
    EXPECT_EQ(listing.entries.front().resource.md5, "900150983cd24fb0d6963f7d28e17f72");
    tree->KeepChecksums({listing.entries.front().resource});
    EXPECT_EQ(Get("f").md5, "900150983cd24fb0d6963f7d28e17f72");
    Put("g", "abc");
    EXPECT_EQ(Get("g").md5, "900150983cd24fb0d6963f7d28e17f72");
}

TEST_F(ServiceTreeTest, ChangeReachesTheScopesItIsIn) {
    tree->MakeCollection({"a"}, "anna", none);
    tree->MakeCollection({"a/b"}, "anna", none);
    Put("a/b/f", "x");
    std::int64_t before = Moment();
    Put("a/b/f", "longer");
    EXPECT_GT(LastChange("a/b/f", Depth::Zero), before);
    EXPECT_GT(LastChange("a/b", Depth::One), before);
    EXPECT_GT(LastChange("", Depth::Infinity), before);
    EXPECT_LT(LastChange("", Depth::One), before);
    EXPECT_LT(LastChange("a", Depth::Zero), before);

    before = Moment();
    Set("a/b", "D:displayname", "B");
    EXPECT_GT(LastChange("a/b", Depth::Zero), before);
    EXPECT_GT(LastChange("a", Depth::One), before);
    EXPECT_LT(LastChange("a", Depth::Zero), before);
    EXPECT_LT(LastChange("a/b/f", Depth::Zero), before);
}

TEST_F(ServiceTreeTest, NewAndRemovedChildrenChangeTheirCollection) {
    tree->MakeCollection({"a"}, "anna", none);
    std::int64_t before = Moment();
    Put("a/f", "x");
    EXPECT_GT(LastChange("a", Depth::Zero), before);
    EXPECT_GT(LastChange("", Depth::One), before);
    EXPECT_LT(LastChange("", Depth::Zero), before);
    before = Moment();
    tree->Remove({"a/f"}, none);
    EXPECT_GT(LastChange("a", Depth::Zero), before);
    EXPECT_GT(LastChange("a", Depth::One), before);
    EXPECT_GT(LastChange("", Depth::Infinity), before);
}

TEST_F(ServiceTreeTest, MoveChangesBothCollectionsAndAllThatMoved) {
    for (const char* path : {"a", "b", "a/x", "a/x/y"}) {
        tree->MakeCollection({path}, "anna", none);
    }
    const std::int64_t before = Moment();
    tree->Move("a/x", "b/x", true, none);
    for (const char* path : {"a", "b", "b/x", "b/x/y"}) {
        EXPECT_GT(LastChange(path, Depth::Zero), before) << path;
    }
}

TEST_F(ServiceTreeTest, LookingChangesNothing) {
    folder.Write("d/f", "x");
    Names("", Depth::Infinity);
    Put("d/g", "x");
    tree->Copy("d", "e", Depth::Infinity, true, "anna", none);
    tree->Move("e", "h", true, none);
    const std::int64_t before = Moment();
    for (const char* path : {"", "d", "h", "d/g"}) {
        EXPECT_LT(LastChange(path, Depth::Zero), before) << path;
    }
    EXPECT_LT(LastChange("", Depth::Infinity), before);
    Restart();
    EXPECT_LT(LastChange("", Depth::Infinity), before);
}

TEST_F(ServiceTreeTest, ChangesByHandReachTheScopesTheyAreIn) {
    folder.Write("d/e/f", "x");
    Names("", Depth::Infinity);
    std::int64_t before = Moment();
    std::filesystem::remove(folder / "d/e/f");
    EXPECT_GT(LastChange("d/e", Depth::Zero), before);
    EXPECT_GT(LastChange("d", Depth::One), before);
    EXPECT_LT(LastChange("d", Depth::Zero), before);
    EXPECT_LT(LastChange("", Depth::One), before);
    before = Moment();
    folder.Write("new", "");
    EXPECT_GT(LastChange("", Depth::Zero), before);
}

TEST_F(ServiceTreeTest, FailedPropertyUpdateChangesNothing) {
    Put("f", "x");
    const std::int64_t before = Moment();
    const auto outcomes =
        tree->SetProperties("f",
                            protocol::PropertyUpdate::Parse("<D:propertyupdate xmlns:D='DAV:'><D:set><D:prop>"
                                                            "<D:displayname>N</D:displayname><dead>d</dead>"
                                                            "<D:getetag>e</D:getetag><D:visibility>maybe</D:visibility>"
                                                            "</D:prop></D:set></D:propertyupdate>"),
                            none)
            .outcomes;
    std::vector<int> statuses;
    statuses.reserve(outcomes.size());
    for (const auto& outcome : outcomes) {
        statuses.push_back(outcome.status);
    }
    EXPECT_THAT(statuses, testing::ElementsAre(424, 424, 403, 409));
    EXPECT_EQ(Get("f").displayName, "");
    EXPECT_TRUE(tree->List({"f"}, Depth::Zero, {true, false}).entries.front().deadProperties.empty());
    EXPECT_LT(LastChange("f", Depth::Zero), before);
}

// Root may write everywhere, so it becomes somebody else for a while.
class WithoutPrivileges {
public:
    WithoutPrivileges() {
        if (_user == 0) {
            EXPECT_EQ(seteuid(65534), 0);
        }
    }
    ~WithoutPrivileges() { EXPECT_EQ(seteuid(_user), 0); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    uid_t _user = geteuid();
};

TEST_F(ServiceTreeTest, ChangeThatTheDiskRefusesLeavesEverythingAsItWas) {
    tree->MakeCollection({"a"}, "anna", none);
    Put("a/f", "x");
    Set("a/f", "u:color", "red");
    tree->MakeCollection({"b"}, "anna", none);
    Put("a/g", "y");
    const std::int64_t id = Get("a/f").id;
    const std::int64_t replacedId = Get("a/g").id;
    chmod(folder.Path().c_str(), 0755);
    chmod((folder / "a").c_str(), 0777);
    chmod((folder / "b").c_str(), 0555);
    {
        const WithoutPrivileges unprivileged;
        EXPECT_THROW(tree->Move("a/f", "b/f", true, none), std::system_error);
        EXPECT_THROW(tree->Move("b", "a/g", true, none), std::system_error);
    }
    chmod((folder / "b").c_str(), 0755);
    EXPECT_EQ(Get("a/f").id, id);
    EXPECT_EQ(Get("a/g").id, replacedId);
    EXPECT_EQ(folder.Read("a/g"), "y");
    EXPECT_EQ(tree->List({"a/f"}, Depth::Zero, {true, false}).entries.front().deadProperties.size(), 1U);
    EXPECT_THAT(Names("b"), testing::ElementsAre("b"));
    Restart();
    EXPECT_EQ(Get("a/f").id, id);
}

TEST_F(ServiceTreeTest, ChangeThatAKilledProcessLeftHalfDoneIsUndone) {
    for (std::size_t taken = 0; taken <= 2; ++taken) {
        Put("f", "old");
        const store::Resource before = Get("f");
        tree.reset();
        {
            store::ContentStore content(folder.Path());
            store::MetadataStore metadata(content.OwnFile("metadata.db"), "anna", 0);
            const auto upload = content.MakeFile(content.WorkPath());
            upload->Write("new");
            upload->Finish();
            upload->Keep();
            std::vector<store::Rename> steps{{"f", content.WorkPath(), true}, {upload->Path(), "f"}};
            for (store::Rename& step : steps) {
                step.inode = content.Find(step.source).value().inode;
            }
            metadata.WriteJournal(steps);
            content.Apply({steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(taken)});
        }
        Restart();
        EXPECT_EQ(folder.Read("f"), "old") << taken;
        EXPECT_EQ(Get("f").id, before.id) << taken;
        EXPECT_EQ(Get("f").version, before.version) << taken;
        EXPECT_EQ(Get("f").md5, before.md5) << taken;
        EXPECT_TRUE(std::filesystem::is_empty(folder / ".ovsync-service/work")) << taken;
    }
}

}  // namespace
}  // namespace service::tree
