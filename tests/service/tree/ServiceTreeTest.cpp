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
        _tree.reset();
        _tree = std::make_unique<ServiceTree>(_folder.Path(), "anna");
    }

    bool Put(const std::string& path, const std::string& content) {
        const auto upload = _tree->NewUpload();
        upload->Write(content);
        return _tree->Put(path, *upload, {}, "berta", _none).isNew;
    }

    store::Resource Get(const std::string& path) {
        return _tree->List({path}, Depth::Zero, {}).entries.front().resource;
    }

    std::vector<std::string> Names(const std::string& path, Depth depth = Depth::One) {
        std::vector<std::string> names;
        for (const auto& entry : _tree->List({path}, depth, {}).entries) {
            names.push_back(entry.path);
        }
        return names;
    }

    std::int64_t LastChange(const std::string& path, Depth depth) { return _tree->List({path}, depth, {}).lastChange; }

    // A moment that is later than every change before and earlier than every change after it.
    std::int64_t Moment() {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const std::int64_t now = _tree->Now();
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
        for (const auto& outcome : _tree->SetProperties(path, protocol::PropertyUpdate::Parse(body), _none).outcomes) {
            EXPECT_EQ(outcome.status, 200) << outcome.reason;
        }
    }

    test::TemporaryFolder _folder;
    protocol::Request _plain;
    Preconditions _none{_plain};
    std::unique_ptr<ServiceTree> _tree;
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
    EXPECT_EQ(_folder.Read("f"), "two!");
}

TEST_F(ServiceTreeTest, MoveKeepsTheIdentityOfAllAndCopyDoesNot) {
    _tree->MakeCollection({"a"}, "anna", _none);
    Put("a/f", "x");
    Set("a/f", "u:color", "red");
    const store::Resource folder = Get("a");
    const store::Resource file = Get("a/f");
    EXPECT_TRUE(_tree->Move("a", "b", true, _none));
    EXPECT_EQ(Get("b").id, folder.id);
    EXPECT_EQ(Get("b/f").itemId, file.itemId);
    EXPECT_EQ(Get("b/f").version, file.version);
    EXPECT_EQ(StatusOf([&] { Get("a"); }), 404);

    Put("b/f", "y");
    EXPECT_TRUE(_tree->Copy("b", "c", Depth::Infinity, true, "carla", _none));
    EXPECT_NE(Get("c").id, folder.id);
    EXPECT_NE(Get("c/f").itemId, file.itemId);
    EXPECT_EQ(Get("c/f").version, 1);
    EXPECT_EQ(Get("c/f").owner, "carla");
    EXPECT_EQ(Get("c/f").parent, Get("c").id);
    EXPECT_EQ(_folder.Read("c/f"), "y");
    const auto copied = _tree->List({"c/f"}, Depth::Zero, {true, false}).entries.front().deadProperties;
    ASSERT_EQ(copied.size(), 1U);
    EXPECT_EQ(copied.front().name.name, "color");
}

TEST_F(ServiceTreeTest, CopyOfDepthZeroLeavesTheChildrenOut) {
    _tree->MakeCollection({"a"}, "anna", _none);
    Put("a/f", "x");
    _tree->Copy("a", "b", Depth::Zero, true, "anna", _none);
    EXPECT_THAT(Names("b"), testing::ElementsAre("b"));
}

TEST_F(ServiceTreeTest, MoveAndCopyReplaceWhatIsThere) {
    Put("f", "file");
    _tree->MakeCollection({"d"}, "anna", _none);
    Put("d/x", "x");
    EXPECT_EQ(StatusOf([&] { _tree->Move("f", "d", false, _none); }), 412);
    EXPECT_FALSE(_tree->Copy("f", "d", Depth::Infinity, true, "anna", _none));
    EXPECT_EQ(_folder.Read("d"), "file");
    EXPECT_FALSE(_tree->Move("d", "f", true, _none));
    EXPECT_THAT(Names(""), testing::ElementsAre("", "f"));
    EXPECT_TRUE(std::filesystem::is_empty(_folder / ".ovsync-service/work"));
}

TEST_F(ServiceTreeTest, NothingIsMovedOrCopiedIntoOrOverItself) {
    _tree->MakeCollection({"a"}, "anna", _none);
    _tree->MakeCollection({"a/b"}, "anna", _none);
    for (const char* to : {"a", "a/b/c", ""}) {
        EXPECT_EQ(StatusOf([&] { _tree->Move("a", to, true, _none); }), 403) << to;
        EXPECT_EQ(StatusOf([&] { _tree->Copy("a", to, Depth::Infinity, true, "anna", _none); }), 403) << to;
    }
    EXPECT_EQ(StatusOf([&] { _tree->Move("a/b", "a", true, _none); }), 403);
    EXPECT_EQ(StatusOf([&] { _tree->Remove({""}, _none); }), 403);
    EXPECT_THAT(Names("", Depth::Infinity), testing::ElementsAre("", "a", "a/b"));
}

TEST_F(ServiceTreeTest, FilesPutThereByHandShowUpAndVanish) {
    _folder.Write("d/f", "abc");
    EXPECT_THAT(Names("", Depth::Infinity), testing::ElementsAre("", "d", "d/f"));
    EXPECT_EQ(Get("d/f").owner, "anna");
    EXPECT_EQ(Get("d/f").version, 1);
    const std::int64_t id = Get("d/f").id;
    Restart();
    EXPECT_EQ(Get("d/f").id, id);
    std::filesystem::remove_all(_folder / "d");
    EXPECT_EQ(StatusOf([&] { Get("d/f"); }), 404);
    EXPECT_THAT(Names(""), testing::ElementsAre(""));
    _folder.Write("d/f", "abc");
    EXPECT_GT(Get("d/f").id, id);
}

TEST_F(ServiceTreeTest, FilesChangedByHandGetANewVersion) {
    Put("f", "abc");
    const store::Resource before = Get("f");
    _folder.Write("f", "abcd");
    const store::Resource longer = Get("f");
    EXPECT_EQ(longer.id, before.id);
    EXPECT_EQ(longer.version, 2);
    EXPECT_EQ(longer.size, 4);
    EXPECT_EQ(longer.md5, "");
    // The same size at another time, even an earlier one.
    std::filesystem::last_write_time(_folder / "f",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(Get("f").version, 3);
    EXPECT_EQ(Get("f").version, 3);
}

TEST_F(ServiceTreeTest, FileThatBecomesAFolderIsAnotherResource) {
    Put("f", "abc");
    const store::Resource file = Get("f");
    std::filesystem::remove(_folder / "f");
    std::filesystem::create_directory(_folder / "f");
    EXPECT_TRUE(Get("f").isCollection);
    EXPECT_NE(Get("f").id, file.id);
}

TEST_F(ServiceTreeTest, SymbolicLinksAreNeitherSeenNorOverwritten) {
    std::filesystem::create_symlink("/etc", _folder / "etc");
    std::filesystem::create_symlink("/etc/passwd", _folder / "passwd");
    EXPECT_THAT(Names("", Depth::Infinity), testing::ElementsAre(""));
    EXPECT_EQ(StatusOf([&] { Get("etc/passwd"); }), 404);
    EXPECT_EQ(StatusOf([&] { Put("passwd", "x"); }), 403);
    EXPECT_EQ(StatusOf([&] { Put("etc/new", "x"); }), 409);
    EXPECT_EQ(StatusOf([&] { _tree->MakeCollection({"etc"}, "anna", _none); }), 403);
    EXPECT_EQ(StatusOf([&] { _tree->Remove({"passwd"}, _none); }), 404);
    EXPECT_TRUE(std::filesystem::is_symlink(_folder / "passwd"));
}

TEST_F(ServiceTreeTest, RemovingAFolderDoesNotFollowItsLinks) {
    const test::TemporaryFolder outside;
    outside.Write("kept", "k");
    _folder.Write("d/f", "");
    std::filesystem::create_symlink(outside.Path(), _folder / "d/link");
    _tree->Remove({"d"}, _none);
    EXPECT_FALSE(_folder.Has("d"));
    EXPECT_EQ(outside.Read("kept"), "k");
}

TEST_F(ServiceTreeTest, ChecksumIsComputedWhenItIsNeededAndKept) {
    _folder.Write("f", "abc");
    auto listing = _tree->List({"f"}, Depth::Zero, {});
    EXPECT_EQ(listing.entries.front().resource.md5, "");
    _tree->CompleteChecksum(listing.entries.front());
    EXPECT_EQ(listing.entries.front().resource.md5, "900150983cd24fb0d6963f7d28e17f72");
    _tree->KeepChecksums({listing.entries.front().resource});
    EXPECT_EQ(Get("f").md5, "900150983cd24fb0d6963f7d28e17f72");
    Put("g", "abc");
    EXPECT_EQ(Get("g").md5, "900150983cd24fb0d6963f7d28e17f72");
}

TEST_F(ServiceTreeTest, ChangeReachesTheScopesItIsIn) {
    _tree->MakeCollection({"a"}, "anna", _none);
    _tree->MakeCollection({"a/b"}, "anna", _none);
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
    _tree->MakeCollection({"a"}, "anna", _none);
    std::int64_t before = Moment();
    Put("a/f", "x");
    EXPECT_GT(LastChange("a", Depth::Zero), before);
    EXPECT_GT(LastChange("", Depth::One), before);
    EXPECT_LT(LastChange("", Depth::Zero), before);
    before = Moment();
    _tree->Remove({"a/f"}, _none);
    EXPECT_GT(LastChange("a", Depth::Zero), before);
    EXPECT_GT(LastChange("a", Depth::One), before);
    EXPECT_GT(LastChange("", Depth::Infinity), before);
}

TEST_F(ServiceTreeTest, MoveChangesBothCollectionsAndAllThatMoved) {
    for (const char* path : {"a", "b", "a/x", "a/x/y"}) {
        _tree->MakeCollection({path}, "anna", _none);
    }
    const std::int64_t before = Moment();
    _tree->Move("a/x", "b/x", true, _none);
    for (const char* path : {"a", "b", "b/x", "b/x/y"}) {
        EXPECT_GT(LastChange(path, Depth::Zero), before) << path;
    }
}

TEST_F(ServiceTreeTest, LookingChangesNothing) {
    _folder.Write("d/f", "x");
    Names("", Depth::Infinity);
    Put("d/g", "x");
    _tree->Copy("d", "e", Depth::Infinity, true, "anna", _none);
    _tree->Move("e", "h", true, _none);
    const std::int64_t before = Moment();
    for (const char* path : {"", "d", "h", "d/g"}) {
        EXPECT_LT(LastChange(path, Depth::Zero), before) << path;
    }
    EXPECT_LT(LastChange("", Depth::Infinity), before);
    Restart();
    EXPECT_LT(LastChange("", Depth::Infinity), before);
}

TEST_F(ServiceTreeTest, ChangesByHandReachTheScopesTheyAreIn) {
    _folder.Write("d/e/f", "x");
    Names("", Depth::Infinity);
    std::int64_t before = Moment();
    std::filesystem::remove(_folder / "d/e/f");
    EXPECT_GT(LastChange("d/e", Depth::Zero), before);
    EXPECT_GT(LastChange("d", Depth::One), before);
    EXPECT_LT(LastChange("d", Depth::Zero), before);
    EXPECT_LT(LastChange("", Depth::One), before);
    before = Moment();
    _folder.Write("new", "");
    EXPECT_GT(LastChange("", Depth::Zero), before);
}

TEST_F(ServiceTreeTest, FailedPropertyUpdateChangesNothing) {
    Put("f", "x");
    const std::int64_t before = Moment();
    const auto outcomes =
        _tree
            ->SetProperties("f",
                            protocol::PropertyUpdate::Parse("<D:propertyupdate xmlns:D='DAV:'><D:set><D:prop>"
                                                            "<D:displayname>N</D:displayname><dead>d</dead>"
                                                            "<D:getetag>e</D:getetag><D:visibility>maybe</D:visibility>"
                                                            "</D:prop></D:set></D:propertyupdate>"),
                            _none)
            .outcomes;
    std::vector<int> statuses;
    statuses.reserve(outcomes.size());
    for (const auto& outcome : outcomes) {
        statuses.push_back(outcome.status);
    }
    EXPECT_THAT(statuses, testing::ElementsAre(424, 424, 403, 409));
    EXPECT_EQ(Get("f").displayName, "");
    EXPECT_TRUE(_tree->List({"f"}, Depth::Zero, {true, false}).entries.front().deadProperties.empty());
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
    _tree->MakeCollection({"a"}, "anna", _none);
    Put("a/f", "x");
    Set("a/f", "u:color", "red");
    _tree->MakeCollection({"b"}, "anna", _none);
    Put("a/g", "y");
    const std::int64_t id = Get("a/f").id;
    const std::int64_t replacedId = Get("a/g").id;
    chmod(_folder.Path().c_str(), 0755);
    chmod((_folder / "a").c_str(), 0777);
    chmod((_folder / "b").c_str(), 0555);
    {
        const WithoutPrivileges unprivileged;
        EXPECT_THROW(_tree->Move("a/f", "b/f", true, _none), std::system_error);
        EXPECT_THROW(_tree->Move("b", "a/g", true, _none), std::system_error);
    }
    chmod((_folder / "b").c_str(), 0755);
    EXPECT_EQ(Get("a/f").id, id);
    EXPECT_EQ(Get("a/g").id, replacedId);
    EXPECT_EQ(_folder.Read("a/g"), "y");
    EXPECT_EQ(_tree->List({"a/f"}, Depth::Zero, {true, false}).entries.front().deadProperties.size(), 1U);
    EXPECT_THAT(Names("b"), testing::ElementsAre("b"));
    Restart();
    EXPECT_EQ(Get("a/f").id, id);
}

TEST_F(ServiceTreeTest, ChangeThatAKilledProcessLeftHalfDoneIsUndone) {
    for (std::size_t taken = 0; taken <= 2; ++taken) {
        Put("f", "old");
        const store::Resource before = Get("f");
        _tree.reset();
        {
            store::ContentStore content(_folder.Path());
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
        EXPECT_EQ(_folder.Read("f"), "old") << taken;
        EXPECT_EQ(Get("f").id, before.id) << taken;
        EXPECT_EQ(Get("f").version, before.version) << taken;
        EXPECT_EQ(Get("f").md5, before.md5) << taken;
        EXPECT_TRUE(std::filesystem::is_empty(_folder / ".ovsync-service/work")) << taken;
    }
}

}  // namespace
}  // namespace service::tree
