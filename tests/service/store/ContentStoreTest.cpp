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
            step.inode = _store.Find(step.source).value().inode;
        }
        return steps;
    }

    std::string Upload(const std::string& content) {
        const auto file = _store.MakeFile(_store.WorkPath());
        file->Write(content);
        file->Finish();
        file->Keep();
        return file->Path();
    }

    test::TemporaryFolder _folder;
    ContentStore _store{_folder.Path()};
};

TEST_F(ContentStoreTest, ListsFilesAndFoldersInTheOrderOfTheirNames) {
    _folder.Write("b.txt", "12345");
    _folder.Write("a/x", "");
    _folder.Write("B", "");
    std::filesystem::create_symlink("/etc", _folder / "link");
    mkfifo((_folder / "pipe").c_str(), 0600);
    _folder.Write("not-\xFF-utf8", "");
    const auto entries = _store.List("").value();
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
    std::filesystem::create_symlink(outside.Path(), _folder / "link");
    EXPECT_FALSE(_store.Find("link/secret"));
    EXPECT_FALSE(_store.List("link"));
    EXPECT_THROW(_store.Open("link/secret"), std::system_error);
    std::filesystem::create_symlink(outside / "secret", _folder / "file");
    EXPECT_EQ(_store.Find("file").value().kind, ContentStore::Kind::Other);
    EXPECT_THROW(_store.Open("file"), std::system_error);
}

TEST_F(ContentStoreTest, ChecksumIsOfTheDescribedContentOnly) {
    _folder.Write("f", "abc");
    const auto entry = _store.Find("f").value();
    EXPECT_EQ(_store.Checksum("f", 3, entry.modified), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_FALSE(_store.Checksum("f", 4, entry.modified));
    EXPECT_FALSE(_store.Checksum("f", 3, entry.modified + 1));
    EXPECT_FALSE(_store.Checksum("absent", 3, entry.modified));
}

TEST_F(ContentStoreTest, UploadKnowsItsSizeAndChecksumAndGoesUnlessKept) {
    const std::string path = _store.WorkPath();
    {
        const auto file = _store.MakeFile(path);
        file->Write("a");
        file->Write("bc");
        file->Finish();
        EXPECT_EQ(file->Size(), 3);
        EXPECT_EQ(file->Checksum(), "900150983cd24fb0d6963f7d28e17f72");
        EXPECT_TRUE(_folder.Has(path));
    }
    EXPECT_FALSE(_folder.Has(path));
}

TEST_F(ContentStoreTest, ReplacedFileComesBackWhereverTheChangeStopped) {
    for (std::size_t taken = 0; taken <= 2; ++taken) {
        _folder.Write("f", "old");
        const std::string upload = Upload("new");
        const auto steps = WithInodes({{"f", _store.WorkPath(), true}, {upload, "f"}});
        _store.Apply({steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(taken)});
        EXPECT_EQ(_folder.Read("f"), taken == 2 ? "new" : "old");
        _store.Undo(steps);
        EXPECT_EQ(_folder.Read("f"), "old") << taken;
        EXPECT_EQ(_folder.Read(upload), "new") << taken;
    }
}

TEST_F(ContentStoreTest, ReplacedFolderComesBackWhereverTheChangeStopped) {
    for (std::size_t taken = 0; taken <= 2; ++taken) {
        _folder.Write("from/x", "new");
        _folder.Write("to/y", "old");
        const auto steps = WithInodes({{"to", _store.WorkPath()}, {"from", "to"}});
        _store.Apply({steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(taken)});
        _store.Undo(steps);
        EXPECT_EQ(_folder.Read("from/x"), "new") << taken;
        EXPECT_EQ(_folder.Read("to/y"), "old") << taken;
    }
}

TEST_F(ContentStoreTest, UndoLeavesAloneWhatPeoplePutThereSince) {
    _folder.Write("f", "old");
    const auto steps = WithInodes({{"f", _store.WorkPath()}});
    _store.Apply(steps);
    _folder.Write("f", "by hand");
    _store.Undo(steps);
    EXPECT_EQ(_folder.Read("f"), "by hand");
}

TEST_F(ContentStoreTest, FolderIsServedByOneProcessOnly) {
    try {
        const ContentStore second(_folder.Path());
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(_folder.Path()));
    }
}

TEST_F(ContentStoreTest, ClearsTheWorkOfAnEarlierProcess) {
    const std::string left = Upload("left");
    _store.MakeFolder(_store.WorkPath());
    _store.ClearWork();
    EXPECT_FALSE(_folder.Has(left));
    EXPECT_TRUE(std::filesystem::is_empty(_folder / ".ovsync-service/work"));
}

}  // namespace
}  // namespace service::store
