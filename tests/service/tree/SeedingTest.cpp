#include "service/tree/Seeding.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>
#include <thread>

#include "tests/service/TemporaryFolder.h"

namespace service::tree {
namespace {

using protocol::Request;

class SeedingTest : public testing::Test {
protected:
    void Seed(const Seeding& seeding) { tree::Seed(tree, folder.Path(), seeding); }

    store::Resource Get(const std::string& path) {
        return tree.List({path}, Request::Depth::Zero, {}).entries.front().resource;
    }

    std::vector<std::string> Tree(const std::string& path) {
        std::vector<std::string> names;
        for (const auto& entry : tree.List({path}, Request::Depth::Infinity, {}).entries) {
            names.push_back(entry.path);
        }
        return names;
    }

    std::int64_t LastChange(const std::string& path) {
        return tree.List({path}, Request::Depth::Infinity, {}).lastChange;
    }

    // A moment that is later than every change before and earlier than every change after it.
    std::int64_t Moment() {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        const std::int64_t now = tree.Now();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        return now;
    }

    test::TemporaryFolder folder;
    ServiceTree tree{folder.Path(), "anna"};
};

TEST_F(SeedingTest, MakesWhatIsMissingAndKeepsTheRest) {
    Seed({"s", 3, 0});
    folder.Write("s/file-000002.txt", "mine");
    const std::int64_t id = Get("s/file-000001.txt").id;
    Seed({"s", 4, 0});
    EXPECT_THAT(Tree("s"), testing::ElementsAre("s", "s/file-000001.txt", "s/file-000002.txt", "s/file-000003.txt",
                                                "s/file-000004.txt"));
    EXPECT_EQ(Get("s/file-000001.txt").id, id);
    EXPECT_NE(Get("s/file-000001.txt").md5, "");
    EXPECT_EQ(folder.Read("s/file-000002.txt"), "mine");
}

TEST_F(SeedingTest, SpreadsTheFilesOverFoldersInTwoLevels) {
    Seed({"s", 7, 3});
    const std::vector<std::string> all{"s",
                                       "s/folder-000001",
                                       "s/folder-000002",
                                       "s/folder-000001/file-000001.txt",
                                       "s/folder-000001/file-000004.txt",
                                       "s/folder-000001/file-000007.txt",
                                       "s/folder-000001/folder-000003",
                                       "s/folder-000002/file-000002.txt",
                                       "s/folder-000002/file-000005.txt",
                                       "s/folder-000001/folder-000003/file-000003.txt",
                                       "s/folder-000001/folder-000003/file-000006.txt"};
    EXPECT_EQ(Tree("s"), all);
    const std::int64_t id = Get("s/folder-000001/folder-000003").id;
    const std::int64_t before = Moment();
    EXPECT_LT(LastChange(""), before);
    std::filesystem::remove(folder / "s/folder-000002/file-000002.txt");
    Seed({"s", 7, 3});
    EXPECT_EQ(Tree("s"), all);
    EXPECT_EQ(Get("s/folder-000001/folder-000003").id, id);
    EXPECT_LT(LastChange("s/folder-000001"), before);
    EXPECT_GT(LastChange("s/folder-000002"), before);
}

TEST_F(SeedingTest, DoesNotTakeAFileForAFolder) {
    folder.Write("s/folder-000002", "mine");
    EXPECT_THROW(Seed({"s", 4, 2}), std::runtime_error);
    EXPECT_EQ(folder.Read("s/folder-000002"), "mine");
    EXPECT_THROW(Seed({"s/folder-000002", 1, 0}), std::runtime_error);
}

TEST_F(SeedingTest, DoesNotFollowLinks) {
    const test::TemporaryFolder outside;
    std::filesystem::create_directory_symlink(outside.Path(), folder / "s");
    EXPECT_THROW(Seed({"s", 1, 0}), std::runtime_error);
    EXPECT_TRUE(std::filesystem::is_empty(outside.Path()));
}

}  // namespace
}  // namespace service::tree
