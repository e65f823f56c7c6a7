#include "service/tree/Checksums.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "service/tree/ServiceTree.h"
#include "tests/service/TemporaryFolder.h"

namespace service::tree {
namespace {

using protocol::Request;

constexpr const char* Md5OfHello = "5d41402abc4b2a76b9719d911017c592";

class ChecksumsTest : public testing::Test {
protected:
    Listing::Entry Get(const std::string& path) { return tree.List({path}, Request::Depth::Zero, {}).entries.front(); }

    // The checksum that the tree keeps in the end.
    std::string Kept(const std::string& path) {
        while (Get(path).resource.md5.empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return Get(path).resource.md5;
    }

    test::TemporaryFolder folder;
    ServiceTree tree{folder.Path(), "anna"};
};

TEST_F(ChecksumsTest, AreComputedAndKept) {
    folder.Write("f", "hello");
    Checksums checksums(tree);
    auto entry = Get("f");
    EXPECT_EQ(entry.resource.md5, "");
    checksums.Complete(entry);
    EXPECT_EQ(entry.resource.md5, Md5OfHello);
    EXPECT_EQ(Kept("f"), Md5OfHello);
}

TEST_F(ChecksumsTest, OfAllFilesAreComputedLater) {
    for (int i = 0; i < 50; ++i) {
        folder.Write("d/" + std::to_string(i), "hello");
    }
    tree.List({""}, Request::Depth::Infinity, {});
    Checksums checksums(tree);
    checksums.CompleteAllLater();
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(Kept("d/" + std::to_string(i)), Md5OfHello) << i;
    }
}

TEST_F(ChecksumsTest, OfContentThatHasBeenReplacedAreNotKept) {
    folder.Write("f", "hello");
    Checksums checksums(tree);
    auto before = Get("f");
    folder.Write("f", "olleh");
    checksums.Complete(before);
    EXPECT_EQ(before.resource.md5, "");
    auto after = Get("f");
    EXPECT_EQ(after.resource.version, 2);
    checksums.Complete(after);
    EXPECT_EQ(after.resource.md5, "10e099145e3c91cd94ccb9bdc50d0495");
    EXPECT_EQ(Kept("f"), "10e099145e3c91cd94ccb9bdc50d0495");
}

TEST_F(ChecksumsTest, ThatAreKnownMeanwhileAreNotComputedAgain) {
    folder.Write("f", "hello");
    auto entry = Get("f");
    auto known = entry.resource;
    known.md5 = "known";
    tree.KeepChecksums({known});
    Checksums checksums(tree);
    checksums.Complete(entry);
    EXPECT_EQ(entry.resource.md5, "known");
}

TEST_F(ChecksumsTest, AreNoChange) {
    folder.Write("f", "hello");
    const auto before = Get("f").resource;
    Checksums checksums(tree);
    checksums.CompleteAllLater();
    Kept("f");
    const auto after = Get("f").resource;
    EXPECT_EQ(after.changed, before.changed);
    EXPECT_EQ(after.ETag(), before.ETag());
}

TEST_F(ChecksumsTest, AreKeptBeforeOthersThatTakeLong) {
    folder.Write("first", "hello");
    Get("first");
    folder.Write("second", "");
    std::filesystem::resize_file(folder / "second", std::uintmax_t{1} << 40U);
    Get("second");
    Checksums checksums(tree);
    checksums.CompleteAllLater();
    EXPECT_EQ(Kept("first"), Md5OfHello);
}

TEST_F(ChecksumsTest, ThatTakeLongEndWithTheirOwner) {
    folder.Write("huge", "");
    std::filesystem::resize_file(folder / "huge", std::uintmax_t{1} << 40U);
    folder.Write("small", "hello");
    Get("huge");
    Get("small");
    {
        Checksums checksums(tree);
        checksums.CompleteAllLater();
        // Somebody who waits for a small file need not wait for the large one.
        auto entry = Get("small");
        checksums.Complete(entry);
        EXPECT_EQ(entry.resource.md5, Md5OfHello);
    }
    EXPECT_EQ(Get("huge").resource.md5, "");
    EXPECT_EQ(Get("small").resource.md5, Md5OfHello);
}

}  // namespace
}  // namespace service::tree
