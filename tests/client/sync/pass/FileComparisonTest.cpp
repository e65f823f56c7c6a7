#include "client/sync/pass/FileComparison.h"

#include <gmock/gmock.h>

#include <QDateTime>
#include <QFile>
#include <cerrno>

#include "client/sync/local/LocalError.h"
#include "client/wire/TransactionError.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::Exclusion;
using ovsync::local::LocalError;
using ovsync::local::LocalSnapshot;
using ovsync::pass::FileComparison;
using ovsync::pass::LocalFileState;
using ovsync::pass::LocalState;
using ovsync::pass::PassSides;
using ovsync::pass::RecordMaker;
using ovsync::pass::RemoteFileState;
using ovsync::pass::RemoteState;
using ovsync::pass::ServiceFolder;
using ovsync::store::FileRecord;
using ovsync::store::RecordDatabase;
using ovsync::wire::TransactionError;
using sync::config::FileConfiguration;
using tests::Text;

/// The file "a" after a pull, and a comparison of it.
class FileComparisonTest : public tests::SyncTest {
protected:
    void StartWith(const QByteArray& content) {
        service.Put(Text("a"), content);
        ASSERT_EQ(Pull(), ovsync::report::SyncOutcome::InStep);
    }

    /// Sees to it that nothing is written into the records.
    template <typename Question>
    auto Ask(const Question& question) {
        const ServiceFolder serviceFolder = service.Folder(folder.path());
        RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
        const std::optional<FileRecord> record = records.FindFile(Text("a"));
        const ovsync::pass::PassScope scope(records);
        const PassSides sides{serviceFolder, tree, records, options, Exclusion(), scope};
        const RecordMaker maker(serviceFolder, QDateTime());
        auto answer = question(FileComparison(sides, maker), record);
        EXPECT_EQ(records.FindFile(Text("a"))->local.modified, record->local.modified);
        EXPECT_EQ(records.FindFile(Text("a"))->file.lastModifiedDate, record->file.lastModifiedDate);
        return answer;
    }

    LocalFileState Here() {
        return Ask([this](const FileComparison& comparison, const std::optional<FileRecord>& record) {
            return comparison.CompareHere(Text("a"), LocalSnapshot::Of(tree, Exclusion()), record);
        });
    }

    FileConfiguration Listed() {
        const ServiceFolder serviceFolder = service.Folder(folder.path());
        return serviceFolder.files->GetFileByName(serviceFolder.FolderAt(QString()), Text("a"));
    }

    RemoteFileState There() {
        return Ask([this](const FileComparison& comparison, const std::optional<FileRecord>& record) {
            return comparison.CompareThere(Listed(), record);
        });
    }

    /// As after a pull within the second of the last change on a server that knows files by their dates alone.
    void ForgetDate() {
        RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
        FileRecord record = *records.FindFile(Text("a"));
        record.file.lastModifiedDate = QDateTime();
        records.WriteFile(record);
    }
};

TEST_F(FileComparisonTest, ATouchedFileIsUnchangedAndItsRecordIsToBeRenewed) {
    StartWith("1");
    disk.Remove(Text("a"));
    Write("a", "1");
    const LocalFileState here = Here();
    EXPECT_EQ(here.state, LocalState::Unchanged);
    ASSERT_TRUE(here.renewed);
    EXPECT_EQ(here.renewed->local.modified, disk.Look(Text("a"))->fingerprint.modified);
    EXPECT_EQ(here.renewed->contentMd5, here.md5);
}

TEST_F(FileComparisonTest, AFileOfAnotherSizeIsChangedWithoutBeingRead) {
    StartWith("1");
    Write("a", "12");
    tree.before = [](const char* operation, const QString&) { EXPECT_STRNE(operation, "Open"); };
    const LocalFileState here = Here();
    EXPECT_EQ(here.state, LocalState::Changed);
    EXPECT_TRUE(here.md5.isEmpty());
    EXPECT_FALSE(here.renewed);
}

TEST_F(FileComparisonTest, AFileThatCannotBeReadCountsAsChangedUnlessTheDiskFails) {
    StartWith("1");
    disk.Remove(Text("a"));
    Write("a", "1");
    int code = EACCES;
    tree.before = [&code](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Open") == 0) {
            throw LocalError(path, code);
        }
    };
    EXPECT_EQ(Here().state, LocalState::Changed);
    code = EIO;
    EXPECT_THROW(Here(), LocalError);
}

TEST_F(FileComparisonTest, TheServicesFileIsReadWhereTheRecordKnowsNoVersionForSure) {
    service.isPlain = true;
    StartWith("1");
    EXPECT_EQ(There().state, RemoteState::Same);
    EXPECT_EQ(service.Count("GET"), 1);
    ForgetDate();
    const RemoteFileState there = There();
    EXPECT_EQ(there.state, RemoteState::Same);
    ASSERT_TRUE(there.renewed);
    EXPECT_EQ(there.renewed->file.lastModifiedDate, Listed().lastModifiedDate);
    EXPECT_EQ(service.Count("GET"), 2);
    service.Overwrite(Text("a"), "2");
    EXPECT_EQ(There().state, RemoteState::New);
    EXPECT_FALSE(There().renewed);
}

TEST_F(FileComparisonTest, AFileForWhichTheServerHasATagByNowIsTheSame) {
    service.isPlain = true;
    StartWith("1");
    EXPECT_FALSE(There().renewed);
    service.listsTags = true;
    const RemoteFileState there = There();
    EXPECT_EQ(there.state, RemoteState::Same);
    ASSERT_TRUE(there.renewed);
    EXPECT_EQ(there.renewed->file.versionId, Listed().versionId);
    EXPECT_EQ(service.Count("GET"), 1);
    service.Put(Text("a"), "2");
    EXPECT_EQ(There().state, RemoteState::New);
}

TEST_F(FileComparisonTest, ContentThatCannotBeReadThereIsNewAndTheFailureHandedOut) {
    service.isPlain = true;
    StartWith("1");
    ForgetDate();
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("GET")) {
            throw TransactionError("GET", QUrl(), Text("reset"), {});
        }
    };
    const RemoteFileState there = There();
    EXPECT_EQ(there.state, RemoteState::New);
    ASSERT_TRUE(there.failure);
    EXPECT_THROW(std::rethrow_exception(there.failure), TransactionError);
}

TEST_F(FileComparisonTest, AllContentsThereAreReadOverOneConnection) {
    StartWith("1");
    service.connections = 0;
    EXPECT_TRUE(Ask([](const FileComparison& comparison, const std::optional<FileRecord>& record) {
        return comparison.IsContentThere(record->file, record->contentMd5) &&
               comparison.IsContentThere(record->file, record->contentMd5);
    }));
    EXPECT_EQ(service.connections, 1);
}

TEST_F(FileComparisonTest, MoreThanTheListedContentThereIsAnother) {
    StartWith("1");
    service.contentInstead = QByteArray(100000, '1');
    service.isWithoutSizes = true;
    EXPECT_FALSE(Ask([](const FileComparison& comparison, const std::optional<FileRecord>& record) {
        return comparison.IsContentThere(record->file, record->contentMd5);
    }));
}

TEST_F(FileComparisonTest, ChecksumThatBecomesKnownIsNoNewVersion) {
    StartWith("hello");
    {
        RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
        FileRecord record = *records.FindFile(Text("a"));
        record.file.md5Checksum.clear();
        records.WriteFile(record);
    }
    const RemoteFileState there = There();
    EXPECT_EQ(there.state, RemoteState::Same);
    ASSERT_TRUE(there.renewed);
    EXPECT_EQ(there.renewed->file.md5Checksum, Listed().md5Checksum);
}

TEST_F(FileComparisonTest, ChecksumThatBecomesKnownAndIsOfOtherContentIsANewVersion) {
    StartWith("hello");
    {
        RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
        FileRecord record = *records.FindFile(Text("a"));
        record.file.md5Checksum.clear();
        record.contentMd5 = Text("00000000000000000000000000000000");
        records.WriteFile(record);
    }
    EXPECT_EQ(There().state, RemoteState::New);
}

}  // namespace
