#include <gmock/gmock.h>

#include <QDirIterator>
#include <QFile>
#include <algorithm>
#include <cerrno>
#include <functional>
#include <random>

#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalError.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::report::SyncOutcome;
using ovsync::store::PartialDownload;
using ovsync::store::RecordDatabase;
using tests::Text;
using Files = std::map<QString, QByteArray>;

const int Size = 3 * 1024 * 1024;
const int ReceivedAtLeast = 2000000;

/// What becomes of a large download that a pass did not finish.
class ResumeTest : public tests::SyncTest {
protected:
    ResumeTest() { options.transfers = 1; }

    QByteArray NewContent() {
        QByteArray made(Size, '\0');
        std::generate(made.begin(), made.end(), [this] { return static_cast<char>(random()); });
        return made;
    }

    /// A pull of "f/large" that ends in the middle.
    void Break() {
        service.Put(Text("f/large"), content);
        service.breaksAfter = ReceivedAtLeast;
        ASSERT_EQ(Pull(), SyncOutcome::Failed);
        service.breaksAfter = -1;
        service.sentBytes = 0;
    }

    /// The path of the part; empty when there is none.
    QString Part() const {
        QDirIterator files(folder.path(), {Text("*SyncTemp}")}, QDir::Files | QDir::Hidden,
                           QDirIterator::Subdirectories);
        return files.hasNext() ? files.next() : QString();
    }

    void ChangePart(const std::function<void(QFile&)>& change) const {
        QFile part(Part());
        ASSERT_TRUE(part.open(QIODevice::ReadWrite));
        change(part);
    }

    QList<PartialDownload> Recorded() const {
        return RecordDatabase(folder.path(), RecordDatabase::Access::Try).PartialDownloads();
    }

    void ExpectComplete() {
        EXPECT_EQ(Pull(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
        EXPECT_EQ(Contents(), service.Contents());
        EXPECT_TRUE(Recorded().isEmpty());
    }

    void ExpectFetchedWhole() {
        ExpectComplete();
        EXPECT_GE(service.sentBytes, Size);
    }

    void ExpectResumed() {
        ExpectComplete();
        EXPECT_LE(service.sentBytes, Size - ReceivedAtLeast);
    }

    std::minstd_rand random{std::random_device()()};
    QByteArray content = NewContent();
};

TEST_F(ResumeTest, WhatAFailedPullHasOfALargeFileIsNotFetchedAgain) {
    Break();
    EXPECT_FALSE(Part().isEmpty());
    ASSERT_EQ(Recorded().size(), 1);
    EXPECT_GE(Recorded().first().size, ReceivedAtLeast);
    ExpectResumed();
}

TEST_F(ResumeTest, NorWhatAFailedSyncHas) {
    service.Put(Text("f/large"), content);
    service.breaksAfter = ReceivedAtLeast;
    ASSERT_EQ(Sync(), SyncOutcome::Failed);
    service.breaksAfter = -1;
    service.sentBytes = 0;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
    EXPECT_LE(service.sentBytes, Size - ReceivedAtLeast);
}

TEST_F(ResumeTest, NorWhatAStoppedPullHas) {
    service.Put(Text("f/large"), content);
    service.breaksAfter = ReceivedAtLeast;
    tree.before = [this](const char* operation, const QString&) {
        if (qstrcmp(operation, "Write") == 0) {
            isStopped = true;
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::Cancelled);
    tree.before = nullptr;
    isStopped = false;
    service.breaksAfter = -1;
    service.sentBytes = 0;
    ExpectResumed();
}

TEST_F(ResumeTest, SeveralFailuresAddUp) {
    Break();
    service.breaksAfter = Size - 300000;
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    service.breaksAfter = -1;
    ExpectResumed();
}

TEST_F(ResumeTest, WhereTheServiceCannotBeReachedThePartStays) {
    Break();
    service.breaksAfter = 0;
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    service.breaksAfter = -1;
    ExpectResumed();
}

TEST_F(ResumeTest, TheFileThatIsReplacedStaysUntilAllHasCome) {
    service.Put(Text("f/large"), "old");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    Break();
    EXPECT_EQ(Content("f/large"), QByteArray("old"));
    ExpectResumed();
    EXPECT_THAT(TrashContents(), testing::ElementsAre(QByteArray("old")));
}

TEST_F(ResumeTest, WhatWasWrittenAndMayNotBeOnTheDiskDoesNotCount) {
    Break();
    ChangePart([](QFile& part) {
        part.seek(part.size());
        part.write(QByteArray(100000, '\0'));
    });
    ExpectResumed();
}

TEST_F(ResumeTest, APartThatIsNotWhatWasRecordedIsFetchedAnew) {
    Break();
    ChangePart([](QFile& part) {
        part.seek(1000000);
        part.write("garbled");
    });
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, SoIsOneThatIsShorter) {
    Break();
    ChangePart([](QFile& part) { part.resize(1000000); });
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, SoIsOneThatIsGone) {
    Break();
    ASSERT_TRUE(QFile::remove(Part()));
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, SoIsOneInPlaceOfWhichThereIsSomethingElse) {
    Break();
    const QString part = Part();
    ASSERT_TRUE(QFile::remove(part));
    ASSERT_TRUE(QFile::link(Path("f"), part));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/large"), content);
}

TEST_F(ResumeTest, AnUnrecordedPartIsRemoved) {
    Break();
    RecordDatabase(folder.path(), RecordDatabase::Access::Change).ForgetPartialDownload(Text("f/large"));
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, OfAnotherVersionTheWholeIsFetched) {
    Break();
    service.Put(Text("f/large"), NewContent());
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, APartOfWhatTheServiceHasDeletedIsRemoved) {
    Break();
    service.Remove(Text("f/large"));
    ExpectComplete();
    EXPECT_TRUE(Part().isEmpty());
}

TEST_F(ResumeTest, SoIsOneInAFolderThatIsAFileThereNow) {
    Break();
    service.Remove(Text("f"));
    service.Put(Text("f"), "1");
    options.deletes = true;
    ExpectComplete();
}

TEST_F(ResumeTest, AServerThatKnowsNoRangesSendsTheWhole) {
    Break();
    service.knowsRanges = false;
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, ARestThatDoesNotFitIsFollowedByTheWholeOnce) {
    Break();
    service.ForgetCounts();
    service.contentInstead = NewContent();
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_EQ(service.Count("GET"), 2);
    EXPECT_TRUE(Part().isEmpty());
    service.contentInstead = QByteArray();
    ExpectComplete();
}

TEST_F(ResumeTest, WithoutAnEntityTagNothingIsKept) {
    service.isWithoutTags = true;
    Break();
    EXPECT_TRUE(Part().isEmpty());
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, OfASmallFileNothingIsKept) {
    service.Put(Text("small"), QByteArray(500000, 'x'));
    service.breaksAfter = 300000;
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_TRUE(Part().isEmpty());
    service.breaksAfter = -1;
    ExpectComplete();
}

TEST_F(ResumeTest, OfAServerWithoutChecksumsThePartIsKnownByItsTag) {
    service.isPlain = true;
    service.listsTags = true;
    Break();
    ExpectResumed();
}

TEST_F(ResumeTest, WhereTheDiskIsFullNothingIsKept) {
    service.Put(Text("f/large"), content);
    tree.before = [writes = 0](const char* operation, const QString& path) mutable {
        writes += qstrcmp(operation, "Write") == 0 ? 1 : 0;
        if (writes > 25) {
            throw ovsync::local::LocalError(path, ENOSPC);
        }
    };
    EXPECT_THROW(Pull(), ovsync::local::LocalError);
    tree.before = nullptr;
    service.sentBytes = 0;
    ExpectFetchedWhole();
}

TEST_F(ResumeTest, ATrialAndAPushLeaveThePart) {
    Break();
    options.isDryRun = true;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    options.isDryRun = false;
    Write("mine", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    ExpectResumed();
}

}  // namespace
