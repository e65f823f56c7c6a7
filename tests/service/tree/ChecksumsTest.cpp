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
    Listing::Entry Get(const std::string& path) { return _tree.List({path}, Request::Depth::Zero, {}).entries.front(); }

    // The checksum that the tree keeps in the end.
    std::string Kept(const std::string& path) {
        while (Get(path).resource.md5.empty()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return Get(path).resource.md5;
    }

    test::TemporaryFolder _folder;
    ServiceTree _tree{_folder.Path(), "anna"};
};

TEST_F(ChecksumsTest, AreComputedAndKept) {
    _folder.Write("f", "hello");
    Checksums checksums(_tree);
    auto entry = Get("f");
    EXPECT_EQ(entry.resource.md5, "");
    checksums.Complete(entry);
    EXPECT_EQ(entry.resource.md5, Md5OfHello);
    EXPECT_EQ(Kept("f"), Md5OfHello);
}

TEST_F(ChecksumsTest, OfAllFilesAreComputedLater) {
    for (int i = 0; i < 50; ++i) {
        _folder.Write("d/" + std::to_string(i), "hello");
    }
    _tree.List({""}, Request::Depth::Infinity, {});
    Checksums checksums(_tree);
    checksums.CompleteAllLater();
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(Kept("d/" + std::to_string(i)), Md5OfHello) << i;
    }
}

TEST_F(ChecksumsTest, OfContentThatHasBeenReplacedAreNotKept) {
    _folder.Write("f", "hello");
    Checksums checksums(_tree);
    auto before = Get("f");
    _folder.Write("f", "olleh");
    checksums.Complete(before);
    EXPECT_EQ(before.resource.md5, "");
    auto after = Get("f");
    EXPECT_EQ(after.resource.version, 2);
    checksums.Complete(after);
    EXPECT_EQ(after.resource.md5, "10e099145e3c91cd94ccb9bdc50d0495");
    EXPECT_EQ(Kept("f"), "10e099145e3c91cd94ccb9bdc50d0495");
}

TEST_F(ChecksumsTest, ThatAreKnownMeanwhileAreNotComputedAgain) {
    _folder.Write("f", "hello");
    auto entry = Get("f");
    auto known = entry.resource;
    known.md5 = "known";
    _tree.KeepChecksums({known});
    Checksums checksums(_tree);
    checksums.Complete(entry);
    EXPECT_EQ(entry.resource.md5, "known");
}

TEST_F(ChecksumsTest, AreNoChange) {
    _folder.Write("f", "hello");
    const auto before = Get("f").resource;
    Checksums checksums(_tree);
    checksums.CompleteAllLater();
    Kept("f");
    const auto after = Get("f").resource;
    EXPECT_EQ(after.changed, before.changed);
    EXPECT_EQ(after.ETag(), before.ETag());
}

TEST_F(ChecksumsTest, AreKeptBeforeOthersThatTakeLong) {
    _folder.Write("first", "hello");
    Get("first");
    _folder.Write("second", "");
    std::filesystem::resize_file(_folder / "second", std::uintmax_t{1} << 40U);
    Get("second");
    Checksums checksums(_tree);
    checksums.CompleteAllLater();
    EXPECT_EQ(Kept("first"), Md5OfHello);
}

TEST_F(ChecksumsTest, ThatTakeLongEndWithTheirOwner) {
    _folder.Write("huge", "");
    std::filesystem::resize_file(_folder / "huge", std::uintmax_t{1} << 40U);
    _folder.Write("small", "hello");
    Get("huge");
    Get("small");
    {
        Checksums checksums(_tree);
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
