#include "client/sync/pull/PullPass.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QCryptographicHash>
#include <QFile>

#include "client/sync/local/LocalError.h"
#include "client/sync/pass/ServiceFolder.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalError;
using ovsync::pass::WrongFolder;
using ovsync::report::SyncOutcome;
using ovsync::wire::TransactionError;
using sync::http::HttpException;
using testing::Contains;
using testing::HasSubstr;
using tests::Text;
using Files = std::map<QString, QByteArray>;

class PullPassTest : public tests::EitherServiceTest {
protected:
    /// A synced file "a" of the content "1".
    void PullOne() {
        service.Put(Text("a"), "1");
        ASSERT_EQ(Pull(), SyncOutcome::InStep);
        service.ForgetCounts();
    }

    void FailEveryGet() {
        service.onRequest = [](const QString& method, const QString&) {
            if (method == Text("GET")) {
                throw TransactionError("GET", QUrl(), Text("reset"), {});
            }
        };
    }
};

TEST_P(PullPassTest, ContentAndDateComeOver) {
    service.Put(Text("f/a"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/a"), QByteArray("1"));
    EXPECT_EQ(disk.Look(Text("f/a"))->fingerprint.modified, Q_INT64_C(1700000002) * 1000000000);
}

TEST_P(PullPassTest, WhatIsListedAsExecutableBecomesSo) {
    const auto isExecutable = [this](const char* path) { return disk.Look(Text(path))->IsExecutable(); };
    service.listedAttributes[Text("tool")].isExecutable = true;
    service.listedAttributes[Text("text")].isExecutable = false;
    for (const char* content : {"1", "2"}) {
        for (const char* file : {"tool", "text", "other"}) {
            service.Put(Text(file), content);
        }
        EXPECT_EQ(Pull(), SyncOutcome::InStep);
        EXPECT_TRUE(isExecutable("tool"));
        EXPECT_FALSE(isExecutable("text"));
        EXPECT_FALSE(isExecutable("other"));
    }
    service.listedAttributes[Text("tool")].isExecutable = false;
    service.listedAttributes[Text("text")].isExecutable = true;
    for (const char* file : {"tool", "text"}) {
        service.Put(Text(file), "3");
    }
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_FALSE(isExecutable("tool"));
    EXPECT_TRUE(isExecutable("text"));
    service.listedAttributes.clear();
    service.Put(Text("text"), "4");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_TRUE(isExecutable("text")) << "a server that says nothing changes nothing";
}

TEST_P(PullPassTest, ADateThatCameWithThisContentCountsMoreThanWhenTheServerStoredIt) {
    const qint64 second = 1000000000;
    ovsync::wire::FileAttributes dated;
    dated.keptDate = QDateTime::fromSecsSinceEpoch(1600000000, Qt::UTC);
    dated.md5OfKeptDate = Text(QCryptographicHash::hash("1", QCryptographicHash::Md5).toHex());
    service.listedAttributes[Text("a")] = dated;
    service.Put(Text("a"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(disk.Look(Text("a"))->fingerprint.modified, 1600000000 * second);
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_GE(disk.Look(Text("a"))->fingerprint.modified, 1700000000 * second);
}

TEST_P(PullPassTest, AConflictEndsWithItsCopyInTheTrashWhenTheOwnFileIsDeleted) {
    PullOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Pull(), SyncOutcome::LeftSome);
    Remove("a");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "theirs"}}));
    EXPECT_THAT(TrashContents(), Contains("theirs"));
}

TEST_P(PullPassTest, ACopyStaysWhileAFileThatChangedHereIsGoneThere) {
    PullOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Pull(), SyncOutcome::LeftSome);
    service.Remove(Text("a"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 2U);
}

TEST_P(PullPassTest, NothingChangedMeansOneQuestion) {
    PullOne();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.CountAll(), 1);
}

TEST_P(PullPassTest, WhatIsLostHereIsListedWithoutACondition) {
    PullOne();
    service.AddFolder(Text("f"));
    Pull();
    Remove("a");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("1"));
    ASSERT_TRUE(disk.RemoveFolder(Text("f")));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_TRUE(disk.Look(Text("f")));
}

TEST_P(PullPassTest, AFileThatWasDeletedAndMadeAgainIsFetchedAlthoughItsVersionIsNoHigher) {
    PullOne();
    service.Put(Text("a"), "2");
    Pull();
    service.Remove(Text("a"));
    service.Put(Text("a"), "3");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("3"));
}

TEST_P(PullPassTest, TheVersionAfterAnUploadedOneIsFetched) {
    Write("a", "1");
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PullPassTest, ANewVersionWithTheSameContentIsNotFetched) {
    PullOne();
    service.Put(Text("a"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 0);
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PullPassTest, WithoutVersionsTheDateTells) {
    service.isPlain = true;
    PullOne();
    service.Put(Text("b"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 1);
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PullPassTest, WithoutVersionsAFileOfTheSameSizeAndDateIsTheSameOnlyIfItsContentIs) {
    service.isPlain = true;
    PullOne();
    ASSERT_TRUE(QFile::remove(Path(".ovsync/records.db")));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 1);
    Write("a", "2");
    service.Put(Text("a"), "3");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PullPassTest, WithoutChecksumsEqualContentIsNoConflict) {
    service.isPlain = true;
    service.Put(Text("a"), "1");
    Write("a", "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 1);
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}}));
}

TEST_P(PullPassTest, AFileThatWasOnlyTouchedCountsAsUnchanged) {
    PullOne();
    Write("a", "1");
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PullPassTest, AReplacedFileKeepsItsPermissions) {
    PullOne();
    ASSERT_EQ(chmod(Path("a").toUtf8().constData(), 0750), 0);
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(disk.Look(Text("a"))->mode, 0750U);
}

TEST_P(PullPassTest, AReplacedFileKeepsThePermissionsThatItWasGivenWhileItWasRead) {
    PullOne();
    Write("a", "1");
    service.Put(Text("a"), "2");
    tree.before = [this](const char* operation, const QString& path) {
        if (operation == QByteArray("Open") && path == Text("a")) {
            ASSERT_EQ(chmod(Path("a").toUtf8().constData(), 0600), 0);
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
    EXPECT_EQ(disk.Look(Text("a"))->mode, 0600U);
}

TEST_P(PullPassTest, AConflictIsToldOfUntilItIsOverButFetchedOnce) {
    PullOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    const Files both = Contents();
    EXPECT_EQ(both.size(), 2U);
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    EXPECT_EQ(service.Count("GET"), 1);
    EXPECT_EQ(Contents(), both);

    service.Put(Text("a"), "theirs again");
    options.isDryRun = true;
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    const QStringList told = Told();
    EXPECT_EQ(told.size(), 2);
    EXPECT_EQ(Contents(), both);
    options.isDryRun = false;
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), told);
    // The copy of the older version is in the trash.
    EXPECT_EQ(Contents().size(), 2U);

    Remove("a");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("theirs again"));
}

TEST_P(PullPassTest, AVersionWhoseChecksumBecomesKnownIsNotFetchedAgain) {
    PullOne();
    service.isWithoutChecksums = true;
    service.Put(Text("a"), "2");
    Write("a", "3");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    const Files both = Contents();
    service.isWithoutChecksums = false;
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Count("GET"), 1);
    EXPECT_EQ(Contents(), both);
}

TEST_P(PullPassTest, AConflictIsOverWhenTheServicesVersionTakesThePlace) {
    PullOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    Pull();
    Write("a", "theirs");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
}

TEST_P(PullPassTest, AFileThatIsWrittenInTheMomentOfItsReplacementIsKeptBeside) {
    PullOne();
    service.Put(Text("a"), "2");
    tree.before = [this](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Swap") == 0 && path == Text("a")) {
            Write("a", "mine!");
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("2"));
    ASSERT_EQ(Contents().size(), 2U);
    EXPECT_THAT(Contents().begin()->first.toStdString(), HasSubstr("a"));
    EXPECT_EQ(Contents().rbegin()->second, QByteArray("mine!"));
    EXPECT_THAT(Contents().rbegin()->first.toStdString(), HasSubstr("a (changed here, "));
}

TEST_P(PullPassTest, AFileThatIsMadeInTheMomentOfItsArrivalStays) {
    service.Put(Text("a"), "theirs");
    tree.before = [this](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Move") == 0 && path == Text("a")) {
            Write("a", "mine");
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("mine"));
    EXPECT_EQ(Contents().rbegin()->second, QByteArray("theirs"));
}

TEST_P(PullPassTest, AFileThatChangesBeforeItIsReplacedStays) {
    PullOne();
    service.Put(Text("a"), "theirs");
    service.onRequest = [this](const QString& method, const QString&) {
        if (method == Text("GET")) {
            Write("a", "mine");
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("mine"));
    EXPECT_EQ(Contents().size(), 2U);
}

TEST_P(PullPassTest, AFileSystemWithoutExchangeReplacesAllTheSame) {
    tree.knowsExchange = false;
    PullOne();
    service.Put(Text("a"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "2"}}));
}

TEST_P(PullPassTest, ContentThatIsNotWhatTheServiceDescribesIsNotPlaced) {
    PullOne();
    service.Put(Text("a"), "2");
    service.contentInstead = "x";
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_EQ(Told(), QStringList(Text("Failed a")));
    EXPECT_EQ(Details().first(),
              Text("what came is not the file that the service lists: it has the MD5 "
                   "9dd4e461268c8034f5c8564e155c67a6 in place of c81e728d9d4c2f636f067f89cc14862c. Nothing was changed "
                   "here; the next pass fetches it again"));
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}}));
    service.contentInstead = "<html>";
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_THAT(Details().first().toStdString(), HasSubstr(": 6 bytes in place of 1. Nothing was changed here"));
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}}));
    service.contentInstead = QByteArray();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PullPassTest, ContentBeyondTheListedSizeIsBrokenOff) {
    service.Put(Text("a"), "12");
    service.contentInstead = QByteArray(1000 * 1000, 'x');
    service.isWithoutSizes = true;
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_EQ(Told(), QStringList(Text("Failed a")));
    EXPECT_THAT(Details().first().toStdString(), HasSubstr(": more than 65000 bytes in place of 2, the rest of which "
                                                           "was not waited for. Nothing was"));
    EXPECT_EQ(Contents(), Files());
    EXPECT_FALSE(HasTemporaryFiles());
    // Not a byte of it is taken where its size tells.
    service.isWithoutSizes = false;
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_THAT(Details().first().toStdString(), HasSubstr(": more than 1000000 bytes in place of 2, the rest"));
}

TEST_P(PullPassTest, AFileThatChangesFasterThanItCanBeFetchedIsToldOf) {
    service.Put(Text("a"), "1");
    service.onRequest = [this](const QString& method, const QString&) {
        if (method == Text("GET")) {
            service.Put(Text("a"), service.Content(Text("a")) + "1");
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_EQ(Details().first(),
              Text("it changes on the service faster than it can be fetched. Nothing was changed here; "
                   "the next pass fetches it again"));
    service.onRequest = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), service.Content(Text("a")));
}

TEST_P(PullPassTest, WhatHasAnotherDateThanTheListingIsToldOf) {
    service.isPlain = true;
    service.secondsAheadOfListings = 60;
    service.Put(Text("a"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_THAT(Details().first().toStdString(), testing::MatchesRegex(".*: it was changed at 2023-[0-9T:-]+Z in place "
                                                                       "of 2023-[0-9T:-]+Z\\. Nothing was changed.*"));
    EXPECT_EQ(Contents(), Files());
}

TEST_P(PullPassTest, AFileThatGrowsAfterItWasListedIsFetchedAgain) {
    for (const bool isWithoutSizes : {false, true}) {
        const QByteArray grown(isWithoutSizes ? 300000 : 200000, 'x');
        service.Put(Text("a"), "1");
        service.isWithoutSizes = isWithoutSizes;
        service.onRequest = [&](const QString& method, const QString& path) {
            if (method == Text("GET") && service.Content(path) == "1") {
                service.Put(path, grown);
            }
        };
        EXPECT_EQ(Pull(), SyncOutcome::InStep);
        EXPECT_EQ(Content("a"), grown);
    }
}

TEST_P(PullPassTest, AFileThatChangesAfterItWasListedIsFetchedAgain) {
    service.Put(Text("a"), "1");
    int changes = 1;
    service.onRequest = [&](const QString& method, const QString& path) {
        if (method == Text("GET") && changes-- > 0) {
            service.Put(path, "22");
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("22"));
}

TEST_P(PullPassTest, AFileThatVanishesAfterItWasListedIsToldOf) {
    service.Put(Text("a"), "1");
    service.Put(Text("b"), "1");
    service.onRequest = [&](const QString& method, const QString& path) {
        if (method == Text("GET") && path == Text("a")) {
            service.Remove(path);
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused a")));
    EXPECT_EQ(Contents(), Files({{Text("b"), "1"}}));
}

TEST_P(PullPassTest, AServiceThatFailsAgainAndAgainIsLeftAlone) {
    for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
        service.Put(Text(name), "1");
    }
    FailEveryGet();
    EXPECT_THROW(Pull(), TransactionError);
    EXPECT_EQ(events.size(), 3);
    EXPECT_EQ(Contents(), Files());
    service.onRequest = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
}

TEST_P(PullPassTest, AFailureDoesNotMoveTheTimeThatTheNextPullAsksFrom) {
    PullOne();
    service.Put(Text("b"), "2");
    FailEveryGet();
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    service.onRequest = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("b"), QByteArray("2"));
}

TEST_P(PullPassTest, AListingThatFailsDeletesNothing) {
    options.deletes = true;
    PullOne();
    service.onRequest = [](const QString&, const QString&) {
        throw TransactionError("PROPFIND", QUrl(), Text("cut"), {});
    };
    EXPECT_THROW(Pull(), TransactionError);
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}}));
}

TEST_P(PullPassTest, WrongCredentialsEndThePass) {
    service.Put(Text("a"), "1");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("GET")) {
            throw HttpException(Text("who are you"), 401, QUrl());
        }
    };
    EXPECT_THROW(Pull(), HttpException);
    EXPECT_FALSE(HasTemporaryFiles());
}

TEST_P(PullPassTest, DeletionsWaitUntilEverythingCouldBeFetched) {
    options.deletes = true;
    PullOne();
    service.Remove(Text("a"));
    service.Put(Text("renamed"), "1");
    FailEveryGet();
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    EXPECT_EQ(Told(), QStringList({Text("Failed renamed"), Text("Waiting a")}));
    service.onRequest = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("renamed"), "1"}}));
}

TEST_P(PullPassTest, AFileThatIsWrittenInTheMomentOfItsRemovalIsPutBack) {
    options.deletes = true;
    PullOne();
    service.Remove(Text("a"));
    service.AddFolder(Text("f"));
    tree.before = [this](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Move") == 0 && path != Text("a")) {
            Write("a", "mine!");
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents(), Files({{Text("a"), "mine!"}}));
    EXPECT_EQ(Told(), QStringList({Text("FolderMade f"), Text("Kept a")}));
}

TEST_P(PullPassTest, FoldersThatAreGoneGoWithTheirFilesUnlessSomethingIsLeftInThem) {
    options.deletes = true;
    service.Put(Text("f/g/a"), "1");
    service.Put(Text("h/a"), "1");
    Pull();
    Write("h/mine", "2");
    service.Remove(Text("f"));
    service.Remove(Text("h"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("h/mine"), "2"}}));
    EXPECT_FALSE(disk.Look(Text("f")));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
}

TEST_P(PullPassTest, AFolderWhoseFileCannotBeDeletedGoesWithItTheNextTime) {
    options.deletes = true;
    service.Put(Text("f/g/a"), "1");
    Pull();
    service.Remove(Text("f"));
    service.Put(Text("f"), "2");
    tree.before = [](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Move") == 0 && path.startsWith(Text("f/g/"))) {
            throw LocalError(path, EACCES);
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents(), Files({{Text("f/g/a"), "1"}}));
    tree.before = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("f"), "2"}}));
}

TEST_P(PullPassTest, AFileBecomesAFolderAndAFolderAFile) {
    service.Put(Text("a"), "1");
    service.Put(Text("f/b"), "2");
    Pull();
    service.Remove(Text("a"));
    service.Remove(Text("f"));
    service.Put(Text("a/c"), "3");
    service.Put(Text("f"), "4");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}, {Text("f/b"), "2"}}));
    EXPECT_EQ(Told(),
              QStringList({Text("Kept a"), Text("Kept f"), Text("Kept f/b"), Text("Refused a"), Text("Refused f")}));
    options.deletes = true;
    options.isDryRun = true;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Deleted a"), Text("Deleted f"), Text("Deleted f/b"), Text("FolderMade a")}));
    options.isDryRun = false;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a/c"), "3"}, {Text("f"), "4"}}));
}

TEST_P(PullPassTest, AFolderThatHoldsWhatIsNotTheServicesDoesNotGiveWay) {
    options.deletes = true;
    service.Put(Text("f/b"), "2");
    Pull();
    Write("f/mine", "5");
    service.Remove(Text("f"));
    service.Put(Text("f"), "4");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Deleted f/b"), Text("Refused f")}));
    EXPECT_EQ(Contents(), Files({{Text("f/mine"), "5"}}));
}

TEST_P(PullPassTest, ATrialTellsTheSameAndChangesNothing) {
    options.deletes = true;
    for (const char* name : {"same", "new version", "changed", "gone", "lost"}) {
        service.Put(Text(name), "1");
    }
    Pull();
    service.Put(Text("new version"), "2");
    service.Put(Text("changed"), "2");
    service.Put(Text("f/new"), "2");
    service.Remove(Text("gone"));
    Write("changed", "mine");
    Remove("lost");
    const Files before = Contents();
    const ovsync::store::Fingerprint hidden = disk.Look(Text(".ovsync"))->fingerprint;
    options.isDryRun = true;
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    const QStringList told = Told();
    EXPECT_EQ(told, QStringList({Text("Conflict changed"), Text("Deleted gone"), Text("FolderMade f")}));
    EXPECT_EQ(events.size(), 6);
    EXPECT_EQ(Contents(), before);
    EXPECT_TRUE(disk.Look(Text(".ovsync"))->fingerprint.IsUnchangedSince(hidden));
    EXPECT_EQ(service.Count("GET"), 5);
    options.isDryRun = false;
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), told);
}

TEST_P(PullPassTest, ATrialTellsOfNoFolderThatIsNotGoingToBeEmpty) {
    options.deletes = true;
    service.Put(Text("f/b"), "1");
    service.Put(Text("g/b"), "1");
    Pull();
    Write("f/g/mine", "5");
    service.Remove(Text("f"));
    service.Remove(Text("g"));
    options.isDryRun = true;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    const QStringList told = Told();
    EXPECT_EQ(told, QStringList({Text("Deleted f/b"), Text("Deleted g"), Text("Deleted g/b")}));
    EXPECT_EQ(Contents(), Files({{Text("f/b"), "1"}, {Text("f/g/mine"), "5"}, {Text("g/b"), "1"}}));
    options.isDryRun = false;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), told);
}

TEST_P(PullPassTest, APassThatIsStoppedWhileItReadsWhatIsHereLeavesNoTemporaryFiles) {
    service.isPlain = true;
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        service.Put(Text(name), "theirs");
    }
    Write("b", "mine");
    Write("d", "mine");
    tree.before = [this](const char* operation, const QString& path) {
        if (QByteArray(operation) == "Open" && (path == Text("b") || path == Text("d"))) {
            isStopped = true;
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::Cancelled);
    EXPECT_FALSE(HasTemporaryFiles());
    EXPECT_EQ(Content("b"), QByteArray("mine"));
    isStopped = false;
    tree.before = nullptr;
    EXPECT_GE(Contents().size(), 5U) << "what came was not placed";
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 7U);
}

TEST_P(PullPassTest, APassThatIsStoppedRecordsWhatIsFinishedAndLeavesNoTemporaryFiles) {
    for (const char* name : {"a", "b", "c", "d"}) {
        service.Put(Text(name), "1");
    }
    options.transfers = 1;
    service.onRequest = [this](const QString& method, const QString& path) {
        if (method == Text("GET") && path == Text("c")) {
            isStopped = true;
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::Cancelled);
    EXPECT_FALSE(HasTemporaryFiles());
    isStopped = false;
    service.onRequest = nullptr;
    const auto finished = static_cast<int>(Contents().size());
    EXPECT_GE(finished, 2);
    service.ForgetCounts();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 4 - finished);
}

TEST_P(PullPassTest, NamesThatTheDiskCannotTellApartAreRefused) {
    tree.tellsCaseApart = false;
    service.Put(Text("a"), "1");
    service.Put(Text("A"), "2");
    service.Put(Text("f/x"), "3");
    service.Put(Text("F/x"), "4");
    service.Put(Text("b"), "5");
    Write("B", "mine");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents(), Files({{Text("B"), "mine"}}));
    EXPECT_THAT(Told(), Contains(Text("Refused a")));
    EXPECT_THAT(Told(), Contains(Text("Refused A")));
}

TEST_P(PullPassTest, AFileWhoseNameBecomesAmbiguousIsNotDeleted) {
    options.deletes = true;
    PullOne();
    tree.tellsCaseApart = false;
    service.Put(Text("A"), "2");
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}}));
}

TEST_P(PullPassTest, WhatIsExcludedIsLeftAloneOnBothSides) {
    options.deletes = true;
    for (const char* path : {"a.tmp", "f/a", "b"}) {
        service.Put(Text(path), "1");
    }
    Pull();
    options.exclusion = ovsync::local::Exclusion({Text("*.tmp"), Text("f")});
    service.Remove(Text("a.tmp"));
    service.Remove(Text("f"));
    service.Put(Text("new.tmp"), "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a.tmp"), "1"}, {Text("b"), "1"}, {Text("f/a"), "1"}}));
    options.exclusion = ovsync::local::Exclusion();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("b"), "1"}, {Text("new.tmp"), "1"}}));
}

TEST_P(PullPassTest, AFolderOnTheDiskThatCannotBeWrittenIsToldOfAndTheRestComes) {
    service.Put(Text("a"), "1");
    service.Put(Text("f/b"), "2");
    tree.before = [](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Create") == 0 && path.startsWith(Text("f/"))) {
            throw LocalError(path, EACCES);
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_THAT(Told(), Contains(Text("Refused f/b")));
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}}));
}

TEST_P(PullPassTest, AFullDiskEndsThePass) {
    service.Put(Text("a"), "1");
    service.Put(Text("b"), "2");
    tree.before = [](const char* operation, const QString& path) {
        if (qstrcmp(operation, "Write") == 0) {
            throw LocalError(path, ENOSPC);
        }
    };
    EXPECT_THROW(Pull(), LocalError);
    EXPECT_EQ(Contents(), Files());
    tree.before = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
}

TEST_P(PullPassTest, LeftoversOfADeadPassGoAndSimilarNamesStay) {
    Write(".0123456789abcdef0123456789abcdef.{SyncTemp}", "partial");
    Write("f/.0123456789abcdef0123456789abcdef.{SyncTemp}", "partial");
    Write("mine.{SyncTemp}", "1");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("mine.{SyncTemp}"), "1"}}));
}

TEST_P(PullPassTest, AnotherFolderOfTheServiceIsRefused) {
    PullOne();
    ovsync::store::RecordDatabase(folder.path(), ovsync::store::RecordDatabase::Access::Change)
        .WriteSetting(Text("address"), Text("http://other/"));
    EXPECT_THROW(Pull(), WrongFolder);
    EXPECT_THROW(Push(), WrongFolder);
}

/// Many small files, which are brought onto the disk together.
class ManyFilesPullTest : public PullPassTest {
protected:
    ManyFilesPullTest() {
        for (int i = 0; i < Count; ++i) {
            service.Put(Text("f/%1").arg(i), QByteArray::number(i));
        }
    }

    int CountOf(const char* operation) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        const auto count = _counts.find(operation);
        return count == _counts.end() ? 0 : count->second;
    }

    SyncOutcome PullCounting() {
        tree.before = [this](const char* operation, const QString&) {
            const std::lock_guard<std::mutex> lock(_mutex);
            ++_counts[operation];
        };
        return Pull();
    }

    static constexpr int Count = 40;

private:
    mutable std::mutex _mutex;
    std::map<std::string, int> _counts;
};

TEST_P(ManyFilesPullTest, ManyFilesAreFlushedAtOnce) {
    EXPECT_EQ(PullCounting(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
    EXPECT_EQ(CountOf("Sync"), 0);
    EXPECT_GT(CountOf("SyncAll"), 0);
}

TEST_P(ManyFilesPullTest, WhereThatIsNotAsGoodEachFileIsFlushed) {
    tree.syncsAll = false;
    EXPECT_EQ(PullCounting(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
    EXPECT_EQ(CountOf("Sync"), Count);
    EXPECT_EQ(CountOf("SyncAll"), 0);
}

TEST_P(ManyFilesPullTest, ALargeFileIsFlushedByItself) {
    service.Put(Text("large"), QByteArray(1024 * 1024, 'x'));
    EXPECT_EQ(PullCounting(), SyncOutcome::InStep);
    EXPECT_EQ(CountOf("Sync"), 1);
}

TEST_P(ManyFilesPullTest, WhatCannotBeFlushedIsNotPutInPlace) {
    tree.before = [](const char* operation, const QString&) {
        if (qstrcmp(operation, "SyncAll") == 0) {
            throw LocalError(Text("the disk"), EIO);
        }
    };
    EXPECT_THROW(Pull(), LocalError);
    EXPECT_EQ(Contents(), Files());
    tree.before = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
}

INSTANTIATE_TEST_SUITE_P(TellsChanges, PullPassTest, testing::Bool(), testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(TellsChanges, ManyFilesPullTest, testing::Bool(), testing::PrintToStringParamName());

}  // namespace
