#include "service/store/ContentStore.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "tests/service/TemporaryFolder.h"

namespace service::store {
namespace {

class ContentStoreTest : public testing::Test {
protected:
    std::vector<Rename> WithInodes(std::vector<Rename> steps) {
        for (Rename& step : steps) {
            step.inode = store.Find(step.source).value().inode;
        }
        return steps;
    }

    std::string Upload(const std::string& content) {
        const auto file = store.MakeFile(store.WorkPath());
        file->Write(content);
        file->Finish();
        file->Keep();
        return file->Path();
    }

    test::TemporaryFolder folder;
    ContentStore store{folder.Path()};
};

TEST_F(ContentStoreTest, ListsFilesAndFoldersInTheOrderOfTheirNames) {
    folder.Write("b.txt", "12345");
    folder.Write("a/x", "");
    folder.Write("B", "");
    std::filesystem::create_symlink("/etc", folder / "link");
    mkfifo((folder / "pipe").c_str(), 0600);
    folder.Write("not-\xFF-utf8", "");
    const auto entries = store.List("").value();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].name, "B");
    EXPECT_EQ(entries[1].name, "a");
    EXPECT_EQ(entries[1].kind, ContentStore::Kind::Collection);
    EXPECT_EQ(entries[2].name, "b.txt");
    EXPECT_EQ(entries[2].size, 5);
}

TEST_F(ContentStoreTest, DoesNotFollowSymbolicLinks) {
    const test::TemporaryFolder outside;
    outside.Write("secret", "s");
    std::filesystem::create_symlink(outside.Path(), folder / "link");
    EXPECT_FALSE(store.Find("link/secret"));
    EXPECT_FALSE(store.List("link"));
    EXPECT_THROW(store.Open("link/secret"), std::system_error);
    std::filesystem::create_symlink(outside / "secret", folder / "file");
    EXPECT_EQ(store.Find("file").value().kind, ContentStore::Kind::Other);
    EXPECT_THROW(store.Open("file"), std::system_error);
}

TEST_F(ContentStoreTest, ChecksumIsOfTheDescribedContentOnly) {
    folder.Write("f", "abc");
    const auto entry = store.Find("f").value();
    EXPECT_EQ(store.Checksum("f", 3, entry.modified), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_FALSE(store.Checksum("f", 4, entry.modified));
    EXPECT_FALSE(store.Checksum("f", 3, entry.modified + 1));
    EXPECT_FALSE(store.Checksum("absent", 3, entry.modified));
}

TEST_F(ContentStoreTest, UploadKnowsItsSizeAndChecksumAndGoesUnlessKept) {
    const std::string path = store.WorkPath();
    {
        const auto file = store.MakeFile(path);
        file->Write("a");
        file->Write("bc");
        file->Finish();
        EXPECT_EQ(file->Size(), 3);
        EXPECT_EQ(file->Checksum(), "900150983cd24fb0d6963f7d28e17f72");
        EXPECT_TRUE(folder.Has(path));
    }
    EXPECT_FALSE(folder.Has(path));
}

TEST_F(ContentStoreTest, ReplacedFileComesBackWhereverTheChangeStopped) {
    for (std::size_t taken = 0; taken <= 2; ++taken) {
        folder.Write("f", "old");
        const std::string upload = Upload("new");
        const auto steps = WithInodes({{"f", store.WorkPath(), true}, {upload, "f"}});
        store.Apply({steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(taken)});
        EXPECT_EQ(folder.Read("f"), taken == 2 ? "new" : "old");
        store.Undo(steps);
        EXPECT_EQ(folder.Read("f"), "old") << taken;
        EXPECT_EQ(folder.Read(upload), "new") << taken;
    }
}

TEST_F(ContentStoreTest, ReplacedFolderComesBackWhereverTheChangeStopped) {
    for (std::size_t taken = 0; taken <= 2; ++taken) {
        folder.Write("from/x", "new");
        folder.Write("to/y", "old");
        const auto steps = WithInodes({{"to", store.WorkPath()}, {"from", "to"}});
        store.Apply({steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(taken)});
        store.Undo(steps);
        EXPECT_EQ(folder.Read("from/x"), "new") << taken;
        EXPECT_EQ(folder.Read("to/y"), "old") << taken;
    }
}

TEST_F(ContentStoreTest, UndoLeavesAloneWhatPeoplePutThereSince) {
    folder.Write("f", "old");
    const auto steps = WithInodes({{"f", store.WorkPath()}});
    store.Apply(steps);
    folder.Write("f", "by hand");
    store.Undo(steps);
    EXPECT_EQ(folder.Read("f"), "by hand");
}

TEST_F(ContentStoreTest, FolderIsServedByOneProcessOnly) {
    try {
        const ContentStore second(folder.Path());
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(folder.Path()));
    }
}

TEST_F(ContentStoreTest, ClearsTheWorkOfAnEarlierProcess) {
    const std::string left = Upload("left");
    store.MakeFolder(store.WorkPath());
    store.ClearWork();
    EXPECT_FALSE(folder.Has(left));
    EXPECT_TRUE(std::filesystem::is_empty(folder / ".ovsync-service/work"));
}

}  // namespace
}  // namespace service::store
