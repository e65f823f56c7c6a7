#include <gmock/gmock.h>
#include <sys/resource.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>

#include "client/store/RecordDatabase.h"
#include "client/store/StoreError.h"
#include "client/sync/local/LocalError.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "host/interfaces/ISyncFilter.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalError;
using ovsync::pass::DeletionLimit;
using ovsync::report::SyncEvent;
using ovsync::report::SyncOutcome;
using ovsync::wire::TransactionError;
using testing::ElementsAre;
using tests::Text;
using Files = std::map<QString, QByteArray>;

/// In place of the end of the process.
class Kill {};

/// What users, cleaners and servers do while nobody looks.
class MishapTest : public tests::SyncTest {
protected:
    MishapTest() {
        options.deletes = true;
        options.deletionLimit = DeletionLimit();
    }

    /// Something happens right before the pass does `operation` to `path`, once.
    void Before(const char* operation, const char* path, const std::function<void()>& happens) {
        const auto hasHappened = std::make_shared<std::atomic<bool>>(false);
        tree.before = [hasHappened, operation = QByteArray(operation), path = Text(path), happens](
                          const char* now, const QString& where) {
            if (operation == now && where == path && !hasHappened->exchange(true)) {
                // It may put something else in the place of this.
                const std::function<void()> event = happens;
                event();
            }
        };
    }

    void RemoveTemporaryFiles() const {
        QDirIterator files(folder.path(), QStringList(Text(".*SyncTemp}")), QDir::Files | QDir::Hidden,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            ASSERT_TRUE(QFile::remove(files.next()));
        }
    }

    /// The content of what the trash has of `path`, in the order of the passes.
    QList<QByteArray> InTrash(const char* path) const {
        QList<QByteArray> contents;
        const QDir trash(Path(".ovsync/trash"));
        for (const QString& pass : trash.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            QFile file(trash.filePath(pass) + QLatin1Char('/') + Text(path));
            if (file.open(QIODevice::ReadOnly)) {
                contents.append(file.readAll());
            }
        }
        return contents;
    }

    QStringList Copies() const {
        return QDir(folder.path()).entryList(QStringList(Text("*(from the service*")), QDir::Files);
    }

    void StartWith(const char* path, const QByteArray& content) {
        service.Put(Text(path), content);
        ASSERT_EQ(Pull(), SyncOutcome::InStep);
    }

    /// Somebody writes the file when the push has looked at it, without giving it another date.
    void ExpectAChangeWithinTheSecondToBeSeen() {
        StartWith("a", "1");
        Write("a", "mine");
        service.onRequest = [this](const QString& method, const QString&) {
            if (method == Text("HEAD") && service.Content(Text("a")) == "1") {
                service.Overwrite(Text("a"), "3");
            }
        };
        EXPECT_EQ(Push(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
        EXPECT_EQ(service.Content(Text("a")), QByteArray("3"));
    }

    /// After `count` files "0", "1" and so on were pulled.
    void StartWithFiles(int count) {
        for (int i = 0; i < count; ++i) {
            service.Put(QString::number(i), QByteArray::number(i));
        }
        ASSERT_EQ(Pull(), SyncOutcome::InStep);
    }
};

TEST_F(MishapTest, ADiskWithoutRoomForTheRecordsIsNotKeptFull) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    StartWithFiles(5);
    for (int i = 0; i < 10; ++i) {
        service.Put(QString::number(i), "new");
    }
    tree.before = [usual](const char* operation, const QString&) {
        if (QByteArray(operation) == "SyncAll") {
            const rlimit none{1, usual.rlim_max};
            setrlimit(RLIMIT_FSIZE, &none);
        }
    };
    EXPECT_THROW(Pull(), ovsync::store::StoreError);
    setrlimit(RLIMIT_FSIZE, &usual);
    tree.before = nullptr;
    EXPECT_FALSE(HasTemporaryFiles());
    EXPECT_EQ(Content("0"), QByteArray("0"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("0"), QByteArray("new"));
}

TEST_F(MishapTest, ANewVersionWhoseTemporaryFileGoesIsNotHere) {
    StartWith("a", "1");
    service.Put(Text("a"), "2");
    Before("Swap", "a", [this] { RemoveTemporaryFiles(); });
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("1"));
    Push();
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_F(MishapTest, ANewFileWhoseTemporaryFileGoesIsNotHere) {
    StartWith("a", "1");
    service.Put(Text("b"), "2");
    Before("Move", "b", [this] { RemoveTemporaryFiles(); });
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("b"), QByteArray("2"));
}

TEST_F(MishapTest, AfterAKillAndACleanerTheOldFileIsTheOldFile) {
    StartWith("a", "1");
    service.Put(Text("a"), "2");
    Before("Swap", "a", [] { throw Kill(); });
    EXPECT_THROW(Pull(), Kill);
    RemoveTemporaryFiles();
    Push();
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_F(MishapTest, AnOldFileCopiedBackIntoAFolderThatWasRenamedMeanwhileIsTheOldFile) {
    StartWith("f/a", "1");
    service.Put(Text("f/a"), "2");
    Before("Swap", "f/a", [this] {
        ASSERT_TRUE(QDir().rename(Path("f"), Path("g")));
        ASSERT_TRUE(QDir().mkdir(Path("f")));
        ASSERT_TRUE(QFile::copy(Path("g/a"), Path("f/a")));
    });
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    Push();
    EXPECT_EQ(service.Content(Text("f/a")), QByteArray("2"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/a"), QByteArray("2"));
    EXPECT_EQ(Content("g/a"), QByteArray("1"));
    EXPECT_FALSE(HasTemporaryFiles());
}

TEST_F(MishapTest, WhatASaveHadPutIntoATemporaryFileInARenamedFolderIsInTheTrash) {
    StartWith("f/a", "1");
    service.Put(Text("f/a"), "2");
    // Saved right before the transaction; killed right after it, before anybody looked at what came out.
    Before("Swap", "f/a", [this] {
        Remove("f/a");
        Write("f/a", "saved");
        tree.before = [](const char* operation, const QString& path) {
            if (QByteArray(operation) == "Look" && path.contains(Text("SyncTemp"))) {
                throw Kill();
            }
        };
    });
    EXPECT_THROW(Pull(), Kill);
    tree.before = nullptr;
    ASSERT_TRUE(QDir().rename(Path("f"), Path("g")));
    Pull();
    EXPECT_THAT(InTrash("f/a"), ElementsAre(QByteArray("saved")));
}

TEST_F(MishapTest, AFolderThatGoesDuringAPassStopsNoLaterOne) {
    StartWith("f/a", "1");
    service.Put(Text("f/a"), "2");
    service.Put(Text("f/b"), "1");
    service.Put(Text("other"), "1");
    options.transfers = 1;
    Before("Swap", "f/a", [this] { ASSERT_TRUE(QDir(Path("f")).removeRecursively()); });
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("other"), QByteArray("1"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/a"), QByteArray("2"));
    EXPECT_EQ(Content("f/b"), QByteArray("1"));
}

TEST_F(MishapTest, AFolderThatGoesRightAfterItsFileWasPlacedStopsNoLaterPass) {
    StartWith("other", "1");
    service.Put(Text("f/a"), "1");
    Before("SyncFolder", "f", [this] { ASSERT_TRUE(QDir(Path("f")).removeRecursively()); });
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/a"), QByteArray("1"));
}

TEST_F(MishapTest, AFolderWhoseFolderCannotBeRemovedGoesWithItTheNextTime) {
    StartWith("stays", "1");
    StartWith("f/g/a", "1");
    service.Remove(Text("f"));
    Before("RemoveFolder", "f/g", [] { throw LocalError(Text("f/g"), EACCES); });
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_FALSE(disk.Look(Text("f")));
}

TEST_F(MishapTest, ASyncedFolderInsideIsLeftAlone) {
    StartWith("sub/a", "1");
    const char* const itsTemporary = "sub/inner/.0123456789abcdef0123456789abcdef.{SyncTemp}";
    Write(itsTemporary, "half");
    Write("sub/.ovsync/records.db", "its own");
    service.Put(Text("sub/a"), "2");
    service.Put(Text("sub/b"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused sub")));
    Write("sub/c", "1");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused sub")));
    service.Remove(Text("sub"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content(itsTemporary), QByteArray("half"));
    EXPECT_EQ(Content("sub/a"), QByteArray("1"));
    EXPECT_EQ(Content("sub/b"), QByteArray("(none)"));
}

TEST_F(MishapTest, AFolderThatCannotBeReadIsToldOfAndLeftOut) {
    StartWith("f/a", "1");
    service.Put(Text("f/a"), "2");
    service.Put(Text("other"), "1");
    tree.before = [](const char* operation, const QString& path) {
        if (QByteArray(operation) == "List" && path == Text("f")) {
            throw LocalError(path, EACCES);
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused f")));
    EXPECT_EQ(Content("other"), QByteArray("1"));
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused f")));
    service.Remove(Text("f"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("f/a"), QByteArray("1"));
}

TEST_F(MishapTest, AnOlderVersionOfTheServiceReplacesNothing) {
    StartWith("a", "1");
    service.Put(Text("a"), "2");
    service.Put(Text("a"), "3");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.Restore(Text("a"), "2", 2);
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("3"));
    EXPECT_EQ(Contents().size(), 2U);
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 2U);
    // To keep the newest, the older one goes.
    for (const auto& file : Contents()) {
        if (file.second == "2") {
            Remove(file.first.toUtf8().constData());
        }
    }
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("3"));
}

TEST_F(MishapTest, ACopyThatIsExcludedEndsNoConflict) {
    StartWith("a", "1");
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    options.exclusion = ovsync::local::Exclusion({Text("*from the service*")});
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
    Pull();
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
}

TEST_F(MishapTest, AConflictNamesTheFileBesideAndTheWaysOut) {
    StartWith("a", "1");
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    for (const bool isPush : {false, false, true}) {
        isPush ? Push() : Pull();
        ASSERT_EQ(Details().size(), 1);
        EXPECT_THAT(Details().first().toStdString(),
                    testing::AllOf(testing::HasSubstr("a (from the service"), testing::HasSubstr("to keep yours"),
                                   testing::HasSubstr("to take it")));
    }
}

TEST_F(MishapTest, WhatTheListingLacksAndTheServiceStillHasIsNotDeleted) {
    StartWith("a", "1");
    service.Put(Text("f/b"), "1");
    service.Put(Text("gone"), "1");
    service.Put(Text("stays"), "1");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.forgotten = {Text("a"), Text("f"), Text("f/b")};
    service.Remove(Text("gone"));
    options.deletionLimit = *DeletionLimit::Read(Text("100%"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Deleted gone"), Text("Kept a"), Text("Kept f"), Text("Kept f/b")}));
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}, {Text("f/b"), "1"}, {Text("stays"), "1"}}));
}

TEST_F(MishapTest, WhatTheServiceDoesNotTellOfIsNotDeleted) {
    StartWith("a", "1");
    StartWith("stays", "1");
    service.Remove(Text("a"));
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("FIND")) {
            throw TransactionError("GET", QUrl(), Text("no answer"), {});
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_EQ(Content("a"), QByteArray("1"));
}

TEST_F(MishapTest, OnlyNotFoundAndGoneSayThatAFileIsGone) {
    StartWithFiles(1);
    for (const int status : {400, 401, 403, 500, 503, 404, 410}) {
        const QString path = QString::number(status);
        StartWith(path.toLatin1().constData(), "1");
        service.Remove(path);
        service.onRequest = [status](const QString& method, const QString&) {
            if (method == Text("FIND")) {
                throw sync::http::HttpException(Text("the answer"), status, QUrl());
            }
        };
        try {
            Pull();
        } catch (const sync::http::HttpException&) {
            EXPECT_EQ(status, 401);
        }
        service.onRequest = nullptr;
        const bool isGone = status == 404 || status == 410;
        EXPECT_EQ(Contents().count(path), isGone ? 0U : 1U) << status;
        EXPECT_EQ(Pull(), SyncOutcome::InStep);
    }
}

TEST_F(MishapTest, AFolderThatIsGoneAnswersForWhatWasInIt) {
    StartWith("stays", "1");
    for (int i = 0; i < 5; ++i) {
        service.Put(Text("f/g/") + QString::number(i), "1");
    }
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.Remove(Text("f"));
    service.ForgetCounts();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("FIND"), 1);
    EXPECT_EQ(Contents(), Files({{Text("stays"), "1"}}));
}

TEST_F(MishapTest, TooManyDeletionsAreNone) {
    StartWithFiles(10);
    for (int i = 0; i < 6; ++i) {
        service.Remove(QString::number(i));
    }
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Kept .")));
    EXPECT_THAT(Details().first().toStdString(), testing::HasSubstr("run \"ovsync pull --delete --max-delete 6 '"));
    EXPECT_EQ(Contents().size(), 10U);
    options.deletionLimit = *DeletionLimit::Read(Text("6"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents().size(), 4U);
}

TEST_F(MishapTest, ThatEverythingIsGoneIsNotBelieved) {
    StartWithFiles(2);
    service.Remove(Text("0"));
    service.Remove(Text("1"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 2U);
    options.deletionLimit = *DeletionLimit::Read(Text("100%"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents().size(), 0U);
}

TEST_F(MishapTest, AFileIsToldOfAndKeptWhoseFolderIsNotListed) {
    StartWith("stays", "1");
    service.Put(Text("f/a"), "1");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.forgotten = {Text("f")};
    service.Put(Text("stays"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_THAT(Told(), testing::Contains(Text("Refused f/a")));
    EXPECT_EQ(Content("f/a"), QByteArray("1"));
}

TEST_F(MishapTest, AClockThatWasAheadHidesNoChange) {
    service.secondsAhead = 86400;
    StartWith("a", "1");
    service.secondsAhead = 0;
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_F(MishapTest, APushWhoseFilesAreNeverConfirmedEnds) {
    for (int i = 0; i < 10; ++i) {
        Write(QByteArray::number(i).constData(), "1");
    }
    options.transfers = 1;
    service.onRequest = [this](const QString& method, const QString&) {
        const bool isAskedAfterwards = method == Text("LIST") && service.Count("PUT") > 0;
        if (method == Text("FIND") || isAskedAfterwards) {
            throw TransactionError("GET", QUrl(), Text("no answer"), {});
        }
    };
    EXPECT_THROW(Push(), TransactionError);
    EXPECT_LT(std::count_if(events.begin(), events.end(), [](const SyncEvent& event) { return event.IsProblem(); }),
              10);
}

TEST_F(MishapTest, WhatIsReplacedOrDeletedIsInTheTrash) {
    StartWith("stays", "1");
    service.Put(Text("f/a"), "1");
    service.Put(Text("f/b"), "other");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.Put(Text("f/a"), "2");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.Remove(Text("f/a"));
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_THAT(InTrash("f/a"), ElementsAre(QByteArray("1"), QByteArray("2")));
    EXPECT_THAT(InTrash("f/b"), ElementsAre());
}

TEST_F(MishapTest, WithoutDaysNothingIsInTheTrash) {
    options.daysKept = 0;
    StartWith("a", "1");
    StartWith("a", "2");
    EXPECT_FALSE(QDir(Path(".ovsync/trash")).exists());
}

TEST_F(MishapTest, ALinkIsToldOfAndLeavesBothSidesInStep) {
    StartWith("a", "1");
    ASSERT_TRUE(QFile::link(Path("a"), Path("link")));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("Skipped link")));
    options.isStrict = true;
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
}

TEST_F(MishapTest, WithoutChecksumsAPushComparesWhatBothSidesHad) {
    service.isPlain = true;
    service.Put(Text("same"), "1");
    service.Put(Text("other"), "1");
    Write("same", "1");
    Write("other", "2");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict other")));
    EXPECT_EQ(service.Count("PUT"), 0);
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict other")));
}

TEST_F(MishapTest, AChangeOfTheSameSizeAndDateIsKnownByItsEntityTag) {
    service.isPlain = true;
    service.listsTags = true;
    StartWith("a", "1");
    service.Overwrite(Text("a"), "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("NewerThere a")));
    Write("a", "mine");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
    Remove("a");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_F(MishapTest, WithATagInTheListingNoneIsAskedForBeforeAChangedFileIsSent) {
    service.isPlain = true;
    service.listsTags = true;
    StartWith("a", "1");
    service.ForgetCounts();
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
    // A look right before and one right after it was sent.
    EXPECT_EQ(service.Count("HEAD"), 2);
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 0);
}

TEST_F(MishapTest, ACopyOfAPassThatDiedBeforeItWasRecordedIsNotSent) {
    for (const bool isPushed : {false, true}) {
        StartWith("a", "1");
        Write("a", "mine");
        service.Put(Text("a"), "theirs");
        Before("SyncFolder", "", [] { throw Kill(); });
        EXPECT_THROW(Sync(), Kill);
        tree.before = nullptr;
        ASSERT_EQ(Copies().size(), 1);
        if (isPushed) {
            Push();
        }
        EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
        EXPECT_EQ(service.Contents(), (std::map<QString, QByteArray>{{Text("a"), "theirs"}}));
        ASSERT_EQ(Copies().size(), 1);
        Remove(Copies().first().toUtf8().constData());
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(service.Content(Text("a")), QByteArray("mine"));
    }
}

TEST_F(MishapTest, WithoutChecksumsAConflictEndsWhenTheFileHasTheContentOfItsCopy) {
    service.isPlain = true;
    service.listsTags = true;
    service.secondsAhead = 100;
    StartWith("a", "1");
    Write("a", "mine..");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    Write("a", "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "theirs"}}));
}

TEST_F(MishapTest, AFolderInThePlaceOfACopyEndsNoConflictAndIsNoCopyOnceItIsOver) {
    StartWith("a", "1");
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    const QString copy = Copies().first();
    Remove(copy.toUtf8().constData());
    Write((copy + Text("/x")).toUtf8().constData(), "inner");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    Write("a", "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    using ovsync::store::RecordDatabase;
    EXPECT_TRUE(RecordDatabase(folder.path(), RecordDatabase::Access::Try).Copies().isEmpty());
}

TEST_F(MishapTest, AServerThatTellsVersionsInListingsAloneTakesChangesAndDeletions) {
    service.isPlain = true;
    service.listsTags = true;
    service.isWithoutVersions = true;
    StartWith("a", "1");
    service.Put(Text("b"), "1");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    Write("a", "2");
    Remove("b");
    EXPECT_EQ(Sync(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
    EXPECT_EQ(service.Contents(), (std::map<QString, QByteArray>{{Text("a"), "2"}}));
    Write("a", "3");
    service.onRequest = [this](const QString& method, const QString&) {
        if (method == Text("PUT")) {
            service.Overwrite(Text("a"), "4");
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("4"));
}

TEST_F(MishapTest, ByADateAloneAFileIsKnownOnlyOnceItsSecondIsOver) {
    service.isPlain = true;
    service.secondsAhead = -10;
    StartWith("a", "1");
    service.Overwrite(Text("a"), "2");
    service.Put(Text("b"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_F(MishapTest, ByADateAloneAFileThatWasSentIsComparedOnce) {
    service.isPlain = true;
    Write("a", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 1);
    service.Put(Text("b"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 2);
}

TEST_F(MishapTest, ByADateAloneWhatReplacedASentFileInTheSameSecondIsSeen) {
    service.isPlain = true;
    Write("a", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    service.Overwrite(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_F(MishapTest, ByADateAloneACopyIsOfNoVersionThatIsMadeInTheSameSecond) {
    service.isPlain = true;
    service.secondsAhead = -100;
    StartWith("a", "1");
    Write("a", "mine");
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    ASSERT_EQ(Copies().size(), 1);
    service.Overwrite(Text("a"), "3");
    Remove(Copies().first().toUtf8().constData());
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("3"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    ASSERT_EQ(Copies().size(), 1);
    EXPECT_EQ(Content(Copies().first().toUtf8().constData()), QByteArray("3"));
    // As before, so that there is one copy of each content.
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Copies().size(), 1);
    // Once the second is over, the copy is of what the service has, and its end is that of the conflict.
    service.secondsAhead = 0;
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    ASSERT_EQ(Copies().size(), 1);
    Remove(Copies().first().toUtf8().constData());
    EXPECT_EQ(Push(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
    EXPECT_EQ(service.Content(Text("a")), QByteArray("mine"));
}

TEST_F(MishapTest, ATagThatCameWithAContentAndBecameStrongSavesTheComparison) {
    service.isPlain = true;
    service.listsTags = true;
    service.areTagsWeak = true;
    service.secondsAhead = -100;
    service.Put(Text("a"), "1");
    service.Put(Text("b"), "1");
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    service.Overwrite(Text("b"), "2");
    service.areTagsWeak = false;
    service.ForgetCounts();
    service.onRequest = [](const QString& method, const QString& path) {
        EXPECT_FALSE(method == Text("GET") && path == Text("a"));
    };
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), (std::map<QString, QByteArray>{{Text("a"), "1"}, {Text("b"), "2"}}));
}

/// Somebody sends a file of the same size between what is sent here and the question what the service has now.
class OvertakenUploadTest : public MishapTest {
protected:
    OvertakenUploadTest() {
        service.isPlain = true;
        service.listsTags = true;
        service.secondsAhead = -100;
        Write("a", "1");
    }

    void ExpectTheirsToBeSeen() {
        const std::map<QString, QByteArray> theirs = {{Text("a"), "2"}};
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Contents(), theirs);
        EXPECT_EQ(service.Contents(), theirs);
    }

    /// Called before the first request of that kind after the upload.
    void BeforeFirst(const char* question, const std::function<void()>& change) {
        const auto isSent = std::make_shared<std::atomic<bool>>(false);
        service.onRequest = [question, change, isSent](const QString& method, const QString& path) {
            if (method == Text(question) && isSent->exchange(false)) {
                change();
            }
            if (method == Text("SENT") && path == Text("a")) {
                *isSent = true;
            }
        };
    }
};

TEST_F(OvertakenUploadTest, AWeakTagTellsNothing) {
    service.areTagsWeak = true;
    BeforeFirst("HEAD", [this] { service.Overwrite(Text("a"), "2"); });
    Sync();
    service.onRequest = nullptr;
    service.areTagsWeak = false;
    ExpectTheirsToBeSeen();
}

TEST_F(OvertakenUploadTest, TheirTagIsNotThatOfTheAnswer) {
    service.tellsStoredTags = true;
    BeforeFirst("HEAD", [this] { service.Overwrite(Text("a"), "2"); });
    Sync();
    ExpectTheirsToBeSeen();
}

TEST_F(OvertakenUploadTest, TheirDateIsAfterThatOfTheAnswer) {
    for (const char* question : {"HEAD", "FIND"}) {
        BeforeFirst(question, [this] { service.Put(Text("a"), "2"); });
        Sync();
        ExpectTheirsToBeSeen();
        Write("a", "3");
    }
}

TEST_F(OvertakenUploadTest, TheirsIsSeenAmongManyThatAreListedAtOnce) {
    for (const char* name : {"b", "c", "d", "e"}) {
        Write(name, "1");
    }
    BeforeFirst("LIST", [this] { service.Put(Text("a"), "2"); });
    Sync();
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
    // It is compared, then fetched, and of the others nothing is.
    EXPECT_LE(service.Count("GET"), 2);
}

TEST_F(OvertakenUploadTest, WithoutAnyDateWhatWasSentIsCompared) {
    service.isWithoutDates = true;
    BeforeFirst("FIND", [this] { service.Put(Text("a"), "2"); });
    Sync();
    ExpectTheirsToBeSeen();
}

TEST_F(OvertakenUploadTest, WhatNobodyOvertookIsNotFetched) {
    for (const bool tellsTags : {false, true}) {
        service.tellsStoredTags = tellsTags;
        Write("a", tellsTags ? "2" : "1");
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
    }
    EXPECT_EQ(service.Count("GET"), 0);
}

TEST_F(MishapTest, ByDamagedRecordsNothingIsDone) {
    for (int i = 0; i < 200; ++i) {
        Write(QByteArray::number(i).constData(), "1");
    }
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    QFile file(Path(".ovsync/records.db"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(file.size() - 4096));
    file.write(QByteArray(100, 'x'));
    file.close();
    Write("0", "2");
    Remove("1");
    const auto there = service.Contents();
    EXPECT_THROW(Sync(), ovsync::store::StoreError);
    EXPECT_EQ(service.Contents(), there);
}

TEST_F(MishapTest, AConflictEndsWithItsCopyAlsoWithinTheSecondOfTheChange) {
    service.isPlain = true;
    service.secondsAhead = -100;
    StartWith("a", "1");
    Write("a", "mine");
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    Remove(Copies().first().toUtf8().constData());
    EXPECT_EQ(Push(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
    EXPECT_EQ(service.Content(Text("a")), QByteArray("mine"));
}

TEST_F(MishapTest, WithinTheSecondOfTheChangeTheContentIsComparedOnceTheTagIsKnown) {
    service.isPlain = true;
    service.secondsAhead = -100;
    ExpectAChangeWithinTheSecondToBeSeen();
}

TEST_F(MishapTest, WithoutStrongTagsTheDateGuardsAChangedFile) {
    service.isPlain = true;
    service.isWithoutTags = true;
    StartWith("a", "1");
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
}

TEST_F(MishapTest, ByADateAloneAChangeRightBeforeAnUploadIsSeen) {
    service.isPlain = true;
    service.isWithoutTags = true;
    for (const char* request : {"HEAD", "FIND", "PUT"}) {
        StartWith("a", "1");
        Write("a", "mine");
        service.onRequest = [this, request](const QString& method, const QString&) {
            if (method == Text(request) && service.Content(Text("a")) != "theirs") {
                service.Put(Text("a"), "theirs");
            }
        };
        EXPECT_EQ(Push(), SyncOutcome::LeftSome) << request;
        EXPECT_EQ(Told(), QStringList(Text("Conflict a"))) << request;
        EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs")) << request;
        service.onRequest = nullptr;
        Remove("a");
        EXPECT_EQ(Pull(), SyncOutcome::InStep);
    }
}

TEST_F(MishapTest, WhatAServerSaysOutOfACacheIsAskedForAgain) {
    service.isPlain = true;
    StartWith("a", "1");
    Write("a", "22");
    service.onRequest = [this, isSent = false](const QString& method, const QString&) mutable {
        if (method == Text("SENT")) {
            isSent = true;
            service.excessOfLengths = -1;
            service.ForgetCounts();
        } else if (isSent && method == Text("HEAD") && service.Count("HEAD") == 2) {
            service.excessOfLengths = 0;
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
}

TEST_F(MishapTest, ByADateAloneAFileIsReplacedOnceTheSecondOfTheListingIsOver) {
    service.isPlain = true;
    service.isWithoutTags = true;
    service.secondsAhead = -20;
    StartWith("a", "1");
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep) << Details().join(Text("\n")).toStdString();
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
}

TEST_F(MishapTest, ByADateAloneAChangeWithinTheSecondOfTheListingIsSeen) {
    service.isPlain = true;
    service.isWithoutTags = true;
    service.secondsAhead = -20;
    ExpectAChangeWithinTheSecondToBeSeen();
}

TEST_F(MishapTest, ByADateAloneNothingIsReplacedBeforeItsSecondIsOver) {
    service.isPlain = true;
    service.isWithoutTags = true;
    service.secondsAhead = -30;
    StartWith("a", "1");
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused a")));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1"));
    service.secondsAhead = 0;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
}

TEST_F(MishapTest, WithoutConditionsWhatIsMadeBeforeAnUploadIsSeen) {
    service.isPlain = true;
    service.listsTags = true;
    service.ignoresConditions = true;
    StartWith("changed", "1");
    Write("changed", "mine");
    Write("new", "mine");
    options.transfers = 1;
    service.onRequest = [this](const QString& method, const QString&) {
        if (method == Text("HEAD") && service.Content(Text("new")) == "(none)") {
            service.Put(Text("changed"), "theirs");
            service.Put(Text("new"), "theirs");
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Conflict changed"), Text("Conflict new")}));
    EXPECT_EQ(service.Contents(), Files({{Text("changed"), "theirs"}, {Text("new"), "theirs"}}));
}

TEST_F(MishapTest, WhetherAServerKnowsConditionsIsFoundOutOnce) {
    service.isPlain = true;
    service.listsTags = true;
    service.Put(Text("theirs"), "1");
    Write("empty", "");
    Write("large", QByteArray(64 * 1024 + 1, 'x'));
    Write("small", "1");
    Write("small too", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), 5);
    Write("later", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), 6);
    EXPECT_THAT(Told(),
                testing::Not(testing::Contains(testing::Property(&QString::toStdString, testing::HasSubstr("Noted")))));
}

TEST_F(MishapTest, AServerThatIgnoresConditionsIsToldOfOnce) {
    service.isPlain = true;
    service.listsTags = true;
    service.Put(Text("theirs"), "1");
    service.ignoresConditions = true;
    Write("a", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Noted a"), Text("Sent a")}));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1"));
    Write("b", "1");
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Sent a"), Text("Sent b")}));
}

TEST_F(MishapTest, AnErrorOfTheServerTellsNothingOfConditions) {
    service.isPlain = true;
    service.listsTags = true;
    service.Put(Text("theirs"), "1");
    for (const char* name : {"a", "b"}) {
        Write(name, "1");
        service.ForgetCounts();
        service.onRequest = [this](const QString& method, const QString& path) {
            if (method == Text("PUT") && service.Count("PUT") == 2) {
                throw sync::http::HttpException(Text("busy"), 503, QUrl(path));
            }
        };
        EXPECT_EQ(Push(), SyncOutcome::InStep);
        EXPECT_EQ(Told(), QStringList(Text("Sent ") + Text(name)));
        EXPECT_EQ(service.Count("PUT"), 2);
    }
}

TEST_F(MishapTest, TheServiceItselfIsNotTried) {
    service.Put(Text("theirs"), "1");
    Write("a", "1");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), 1);
}

TEST_F(MishapTest, ASizeThatIsTheSameInThirtyTwoBitsIsAnotherSize) {
    service.isPlain = true;
    service.excessOfLengths = qint64(1) << 32;
    Write("a", "1");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
}

TEST_F(MishapTest, WithoutALengthTheListingTellsWhetherAFileWasStored) {
    service.isPlain = true;
    service.isWithoutLengths = true;
    Write("a", "");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("Sent a")));
    Write("b", "12");
    service.onRequest = [this](const QString& method, const QString& path) {
        if (method == Text("SENT")) {
            service.Put(path, "1");
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict b")));
}

struct LimitCase {
    const char* text;
    int deletions;
    int files;
    bool isAnyLeft;
    bool isAllowed;
};

TEST(DeletionLimitTest, AllowsWhatItSays) {
    const LimitCase cases[] = {{"", 4, 9, true, true},      {"", 9, 9, true, true},      {"", 1, 9, false, false},
                               {"", 5, 10, true, true},     {"", 6, 10, true, false},    {"", 0, 0, false, true},
                               {"", 1, 1, false, false},    {"3", 3, 3, false, true},    {"3", 4, 100, true, false},
                               {"0", 1, 100, true, false},  {"0", 0, 100, true, true},   {"30%", 3, 10, true, true},
                               {"30%", 4, 10, true, false}, {"100%", 7, 7, false, true}, {"0%", 1, 7, true, false}};
    for (const LimitCase& limit : cases) {
        const DeletionLimit used = *limit.text == 0 ? DeletionLimit() : *DeletionLimit::Read(Text(limit.text));
        EXPECT_EQ(used.Allows(limit.deletions, limit.files, limit.isAnyLeft), limit.isAllowed)
            << limit.text << ": " << limit.deletions << " of " << limit.files;
    }
}

TEST(DeletionLimitTest, IsANumberOrAPart) {
    for (const char* text : {"", "-1", "+1", "x", "1x", "101%", "%", "1.5", "99999999999"}) {
        EXPECT_FALSE(DeletionLimit::Read(Text(text))) << text;
    }
}

}  // namespace
