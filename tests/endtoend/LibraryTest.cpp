#include <gtest/gtest.h>

#include <QDateTime>
#include <QThread>
#include <QVector>
#include <memory>

#include "client/cli/input/Location.h"
#include "client/library/ServiceConnection.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::input::Location;
using ovsync::library::ServiceConnection;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using tests::Service;
using tests::Text;

class LibraryTest : public testing::Test {
protected:
    LibraryTest() {
        _service.AddFile(Text("folder/a.txt"), "hello");
        _service.AddFile(Text("folder/sub/b.txt"), "x");
    }

    // Lists the folder as a sync client does: since the service's time of the listing before.
    int ListSinceLastTime() {
        _folder.setLastSyncTime(_folder.getLastServerSyncRequestTime());
        return _connection.Files().GetNameSortedFilesByFolder(_folder, _files);
    }

    Service _service;
    ServiceConnection _connection{Location::FromUrl(_service.Url()).baseUrl};
    FolderConfiguration _folder = _connection.Folder(Text("folder"));
    std::shared_ptr<QVector<FileConfiguration>> _files;
};

TEST_F(LibraryTest, AListingHasTheRecordsAndTheServicesTime) {
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-2);
    ASSERT_EQ(_connection.Files().GetNameSortedFilesByFolder(_folder, _files), 0);
    ASSERT_EQ(_files->size(), 1);
    EXPECT_EQ(_files->first().name, Text("a.txt"));
    EXPECT_EQ(_files->first().size, 5);
    EXPECT_EQ(_files->first().md5Checksum, Text("5d41402abc4b2a76b9719d911017c592"));
    EXPECT_GT(_folder.getLastServerSyncRequestTime(), before);
    EXPECT_LT(_folder.getLastServerSyncRequestTime(), QDateTime::currentDateTimeUtc().addSecs(2));
}

TEST_F(LibraryTest, AnUnchangedFolderIs304OnceTheSecondOfItsChangeIsOver) {
    ASSERT_EQ(ListSinceLastTime(), 0);
    int status = 0;
    for (int i = 0; i < 50 && status != 304; ++i) {
        QThread::msleep(100);
        status = ListSinceLastTime();
    }
    EXPECT_EQ(status, 304);
}

TEST_F(LibraryTest, NoChangeIsMissedHoweverCloseItIsToAListing) {
    for (int i = 0; i < 30; ++i) {
        _service.AddFile(QStringLiteral("folder/new-%1.txt").arg(i), "x");
        ASSERT_EQ(ListSinceLastTime(), 0) << i;
        EXPECT_EQ(_files->size(), i + 2);
        QThread::msleep(static_cast<unsigned long>(i * 7 % 60));
    }
}

TEST_F(LibraryTest, AnUnknownFolderIs404) {
    FolderConfiguration missing = _connection.Folder(Text("missing"));
    EXPECT_EQ(_connection.Files().GetNameSortedFilesByFolder(missing, _files), 404);
    EXPECT_FALSE(_files);
}

TEST_F(LibraryTest, ALookupAndAListingGiveTheSameRecord) {
    ASSERT_EQ(ListSinceLastTime(), 0);
    const FileConfiguration found = _connection.Files().GetFileByName(_folder, Text("a.txt"));
    const FileConfiguration& listed = _files->first();
    EXPECT_EQ(found.name, listed.name);
    EXPECT_EQ(found.serverPath, listed.serverPath);
    EXPECT_EQ(found.itemId, listed.itemId);
    EXPECT_EQ(found.versionId, listed.versionId);
    EXPECT_EQ(found.md5Checksum, listed.md5Checksum);
    EXPECT_EQ(found.customProperties, listed.customProperties);
}

TEST_F(LibraryTest, AChangedFileIsToBeDownloadedAndAnUnchangedOneIsNot) {
    FileConfiguration local = _connection.Files().GetFileByName(_folder, Text("a.txt"));
    EXPECT_FALSE(
        _connection.Files().ShouldDownloadFile(_connection.Files().GetFileByName(_folder, Text("a.txt")), local));
    _service.AddFile(Text("folder/a.txt"), "other");
    EXPECT_TRUE(
        _connection.Files().ShouldDownloadFile(_connection.Files().GetFileByName(_folder, Text("a.txt")), local));
}

}  // namespace
