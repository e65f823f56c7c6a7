#include "client/sync/push/PushPass.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cerrno>

#include "client/sync/local/LocalError.h"
#include "client/sync/push/PushOrder.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalError;
using ovsync::report::SyncOutcome;
using ovsync::wire::TransactionError;
using sync::http::HttpException;
using tests::Text;
using Files = std::map<QString, QByteArray>;

class PushPassTest : public tests::EitherServiceTest {
protected:
    /// A synced file "a" of the content "1".
    void PushOne() {
        Write("a", "1");
        ASSERT_EQ(Push(), SyncOutcome::InStep);
        service.ForgetCounts();
    }
};

TEST_P(PushPassTest, WhatCannotBeReadIsRefusedByATrialToo) {
    Write("closed", "1");
    Write("open", "1");
    tree.before = [](const char* operation, const QString& path) {
        if (QByteArray(operation) == "Open" && path == Text("closed")) {
            throw LocalError(path, EACCES);
        }
    };
    options.isDryRun = true;
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    const QStringList told = Told();
    EXPECT_EQ(told, QStringList({Text("Refused closed"), Text("Sent open")}));
    options.isDryRun = false;
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), told);
}

TEST_P(PushPassTest, FilesAndFoldersGoOverOnce) {
    Write("f/g/a", "1");
    Write("b", "");
    disk.MakeFolder(Text("e"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("FolderSent e"), Text("FolderSent f"), Text("FolderSent f/g"), Text("Sent b"),
                                   Text("Sent f/g/a")}));
    EXPECT_EQ(service.Contents(), Files({{Text("b"), ""}, {Text("f/g/a"), "1"}}));
    service.ForgetCounts();
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(service.Count("PUT") + service.Count("GET"), 0);
}

TEST_P(PushPassTest, AChangedFileReplacesTheServices) {
    PushOne();
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
    Write("a", "3");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("3"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("GET"), 0);
}

TEST_P(PushPassTest, TheSameOnAServerWithoutVersions) {
    service.isPlain = true;
    PushOne();
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    // What was sent is compared once each time.
    EXPECT_EQ(service.Count("GET"), 2);
    service.Put(Text("a"), "3");
    Write("a", "4");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("3"));
}

/// Its service does not look at conditions when an upload ends, and has locks.
class LockingPushTest : public PushPassTest {
protected:
    void SetUp() override {
        service.isPlain = true;
        service.listsTags = true;
        service.hasLocks = true;
        Write("f/a", "1");
        Write("b", "1");
        Write("small", "1");
        ASSERT_EQ(Push(), SyncOutcome::InStep);
        service.ForgetCounts();
    }

    static QByteArray Large(char content) { return QByteArray(ovsync::push::PushOrder::LockedSize, content); }
    int LocksHeld() const { return static_cast<int>(service.Locks().size()); }
};

TEST_P(LockingPushTest, ALargeFileThatIsReplacedOnAnotherServerIsLockedUntilItIsKnownWhatIsThere) {
    QStringList met;
    service.onRequest = [&](const QString& method, const QString& path) {
        if (path == Text("f/a") && method != Text("FIND") && method != Text("LOOK")) {
            met.append(method + Text(service.Locks().count(path) != 0 ? " of what is locked" : ""));
        }
    };
    Write("f/a", Large('2'));
    Write("f/new", Large('2'));
    Write("small", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("f/a")), Large('2'));
    EXPECT_EQ(met, QStringList({Text("LOCK"), Text("HEAD of what is locked"), Text("PUT of what is locked"),
                                Text("SENT of what is locked"), Text("HEAD of what is locked"),
                                Text("UNLOCK of what is locked")}));
    EXPECT_EQ(service.Count("LOCK"), 1);
    EXPECT_EQ(LocksHeld(), 0);
    service.onRequest = nullptr;
    service.ForgetCounts();
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("RELEASE"), 0);
}

TEST_P(LockingPushTest, WhatSomebodyElseHasLockedIsLeftToTheNextPass) {
    Write("f/a", Large('2'));
    service.LockForOther(Text("f/a"));
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused f/a")));
    EXPECT_EQ(service.Content(Text("f/a")), QByteArray("1"));
    service.Unlock(Text("f/a"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("f/a")), Large('2'));
}

TEST_P(LockingPushTest, WhatChangedBeforeItWasLockedIsAConflictAndNotLockedLonger) {
    options.transfers = 1;
    Write("f/a", Large('m'));
    Write("b", Large('m'));
    BeforeRequest("LOCK", [&] {
        service.Put(Text("f/a"), "theirs");
        service.Remove(Text("b"));
    });
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Conflict b"), Text("Conflict f/a")}));
    EXPECT_EQ(service.Contents(), Files({{Text("f/a"), "theirs"}, {Text("small"), "1"}}));
    EXPECT_EQ(LocksHeld(), 0);
}

TEST_P(LockingPushTest, TheNextPassEndsTheLocksThatOneLeft) {
    service.onRequest = [&](const QString& method, const QString&) {
        if (method == Text("UNLOCK")) {
            throw TransactionError("UNLOCK", QUrl(), Text("reset"), {});
        }
    };
    Write("f/a", Large('2'));
    Write("b", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(LocksHeld(), 2);
    service.onRequest = nullptr;
    service.LockForOther(Text("f/theirs"));
    service.ForgetCounts();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("RELEASE"), 2);
    EXPECT_EQ(LocksHeld(), 1);
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("RELEASE"), 2);
}

TEST_P(LockingPushTest, WhoseReleaseFailsTriesAgain) {
    BeforeRequest("UNLOCK", [&] { throw TransactionError("UNLOCK", QUrl(), Text("reset"), {}); });
    Write("f/a", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    BeforeRequest("RELEASE", [&] { throw TransactionError("PROPFIND", QUrl(), Text("reset"), {}); });
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    service.ForgetCounts();
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("RELEASE"), 1);
    EXPECT_EQ(LocksHeld(), 0);
}

TEST_P(LockingPushTest, WhatIsRefusedForAnotherReasonIsNotSentTwice) {
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("PUT")) {
            throw HttpException(Text("no room"), 507, QUrl());
        }
    };
    Write("f/a", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Count("PUT"), 1);
    EXPECT_EQ(LocksHeld(), 0);
}

TEST_P(LockingPushTest, WhatWasLeftBeforeIsNotForgottenForWhatIsLeftNow) {
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("UNLOCK") || method == Text("RELEASE")) {
            throw TransactionError(method.toLatin1(), QUrl(), Text("reset"), {});
        }
    };
    Write("f/a", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    Write("b", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(LocksHeld(), 2);
    service.onRequest = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(LocksHeld(), 0);
}

TEST_P(LockingPushTest, WhatIsRefusedAlthoughItIsLockedIsSentWithoutALock) {
    service.refusesOwnLocks = true;
    options.transfers = 1;
    Write("f/a", Large('2'));
    Write("b", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("f/a")), Large('2'));
    EXPECT_EQ(service.Content(Text("b")), Large('2'));
    EXPECT_EQ(service.Count("LOCK"), 1);
    EXPECT_EQ(LocksHeld(), 0);
}

TEST_P(LockingPushTest, TheServiceItselfIsAskedForNoLocks) {
    service.isPlain = false;
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    Write("f/a", Large('2'));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("LOCK"), 0);
    EXPECT_EQ(service.Count("PUT"), 1);
}

TEST_P(PushPassTest, WhatChangedOnTheServiceIsNotOverwritten) {
    PushOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
}

TEST_P(PushPassTest, WhatIsOnBothSidesWithoutARecordIsAConflictUnlessItIsTheSame) {
    Write("same", "1");
    Write("other", "2");
    service.Put(Text("same"), "1");
    service.Put(Text("other"), "3");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict other")));
    EXPECT_EQ(service.Count("PUT"), 0);
    Write("same", "11");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents(), Files({{Text("other"), "3"}, {Text("same"), "11"}}));
}

TEST_P(PushPassTest, AConflictEndsWhenTheCopyIsRemovedAndNotBefore) {
    PushOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    Pull();
    ASSERT_EQ(Contents().size(), 2U);
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "theirs"}}));
    Remove(Contents().rbegin()->first.toUtf8().constData());
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "mine"}}));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
}

TEST_P(PushPassTest, AFileThatIsNotThereAfterItWasSentIsToldAsSuch) {
    Write("a", "1");
    BeforeRequest("SENT", [this] { service.Remove(Text("a")); });
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    ASSERT_EQ(Told(), QStringList(Text("Refused a")));
    EXPECT_THAT(Details().first().toStdString(), testing::HasSubstr("under another name"));
}

TEST_P(PushPassTest, ARemovedCopyOfAnOlderVersionEndsNoConflict) {
    PushOne();
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    Pull();
    Remove(Contents().rbegin()->first.toUtf8().constData());
    service.Put(Text("a"), "theirs again");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs again"));
}

TEST_P(PushPassTest, AChangeOnTheServiceAtAnyMomentBeforeTheContentIsStoredIsAConflict) {
    for (const char* moment : {"HEAD", "FIND", "PUT"}) {
        Write("a", moment);
        service.Put(Text("a"), moment);
        ASSERT_EQ(Push(), SyncOutcome::InStep);
        Write("a", "mine");
        BeforeRequest(moment, [this] { service.Put(Text("a"), "theirs"); });
        EXPECT_EQ(Push(), SyncOutcome::LeftSome) << moment;
        EXPECT_EQ(Told(), QStringList(Text("Conflict a"))) << moment;
        EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs")) << moment;
        Remove("a");
        ASSERT_EQ(Pull(), SyncOutcome::InStep);
    }
}

TEST_P(PushPassTest, AFileThatIsMadeOnTheServiceMeanwhileIsAConflict) {
    Write("a", "mine");
    BeforeRequest("PUT", [this] { service.Put(Text("a"), "theirs"); });
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("mine"));
    EXPECT_EQ(Contents().size(), 2U);
}

TEST_P(PushPassTest, WhatIsSomethingElseRightAfterItWasSentIsAConflict) {
    for (const bool isPlain : {false, true}) {
        service.isPlain = isPlain;
        const char* const name = isPlain ? "b" : "a";
        Write(name, "mine");
        BeforeRequest("SENT", [this, name] { service.Put(Text(name), "theirs, longer"); });
        EXPECT_EQ(Push(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList({Text("Conflict ") + QLatin1String(name)}));
        EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
        EXPECT_EQ(Content(name), QByteArray("mine"));
        Remove(name);
        service.Remove(Text(name));
    }
}

TEST_P(PushPassTest, AnUploadThatTheServiceOnlySeemedToStoreIsAConflict) {
    Write("a", "1");
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    for (const char* changed : {"2", "longer"}) {
        Write("a", changed);
        BeforeRequest("SENT", [this] { service.Put(Text("a"), "1"); });
        EXPECT_EQ(Push(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList({Text("Conflict a")}));
        EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
        EXPECT_EQ(Content("a"), QByteArray(changed));
        service.Put(Text("a"), changed);
        EXPECT_EQ(Pull(), SyncOutcome::InStep);
    }
}

TEST_P(PushPassTest, AFileThatIsWrittenWhileItIsSentIsSentAgain) {
    Write("a", "1");
    BeforeRequest("SENT", [this] { Write("a", "22"); });
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Refused a"), Text("Sent a")}));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("22"));
}

TEST_P(PushPassTest, AFileThatIsGoneBeforeItIsReadIsLeftToTheNextPassAndNotToAnybody) {
    Write("f/b", "1");
    PushOne();
    Write("a", "2");
    Write("f/b", "2");
    Write("f/new", "3");
    tree.before = [this](const char* operation, const QString& path) {
        if (operation == std::string("Open") && path != Text("a")) {
            QDir(Path("f")).removeRecursively();
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("Sent a")));
    tree.before = nullptr;
    options.deletes = true;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "2"}}));
}

TEST_P(PushPassTest, OneThatIsSomethingElseByThenIsNoFailureEither) {
    Write("folder", "1");
    Write("link", "1");
    tree.before = [this](const char* operation, const QString& path) {
        if (operation == std::string("Open")) {
            ASSERT_TRUE(QFile::remove(folder.filePath(path)));
            ASSERT_TRUE(path == Text("link") ? QFile::link(Text("/"), folder.filePath(path))
                                             : QDir().mkdir(folder.filePath(path)));
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_TRUE(Told().isEmpty()) << Told().join(QLatin1Char('\n')).toStdString();
}

TEST_P(PushPassTest, AFileThatGoesWhileItIsSentIsLeftToTheNextPass) {
    Write("a", "1");
    BeforeRequest("PUT", [this] { Remove("a"); });
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("Sent a")));
    options.deletes = true;
    options.deletionLimit = *ovsync::pass::DeletionLimit::Read(Text("1"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_TRUE(service.Contents().empty());
}

TEST_P(PushPassTest, AFileThatGrowsOrShrinksWhileItIsSentIsSentAgain) {
    for (const char* content : {"4444", "1"}) {
        Write("a", "333");
        BeforeRequest("PUT", [this, content] { Write("a", content); });
        EXPECT_EQ(Push(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList(Text("Refused a")));
        EXPECT_EQ(Push(), SyncOutcome::InStep);
        EXPECT_EQ(service.Content(Text("a")), QByteArray(content));
    }
}

TEST_P(PushPassTest, WhatTheServiceDeletedIsNotMadeAgain) {
    Write("f/a", "1");
    Write("f/b", "1");
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    service.Remove(Text("f"));
    Write("f/b", "2");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Conflict f/b"), Text("Kept f"), Text("Kept f/a")}));
    EXPECT_TRUE(service.Contents().empty());
    EXPECT_FALSE(service.HasFolder(Text("f")));
    Write("f/g/new", "3");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents(), Files({{Text("f/g/new"), "3"}}));
}

TEST_P(PushPassTest, WhatWasDeletedHereIsToldOfAndStaysThere) {
    Write("f/a", "1");
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    Remove("f/a");
    ASSERT_TRUE(disk.RemoveFolder(Text("f")));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("DeletedHere f"), Text("DeletedHere f/a")}));
    EXPECT_EQ(service.Contents(), Files({{Text("f/a"), "1"}}));
    service.Remove(Text("f"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_TRUE(events.isEmpty());
}

TEST_P(PushPassTest, NewerVersionsAreLeftToAPull) {
    PushOne();
    service.Put(Text("a"), "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("NewerThere a")));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("2"));
}

TEST_P(PushPassTest, NothingIsPutWhereTheServiceHidesSomething) {
    service.unlisted.insert(Text("form"));
    Write("form/a", "1");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused form")));
    EXPECT_EQ(service.Count("PUT") + service.Count("MKCOL"), 0);
}

TEST_P(PushPassTest, WithoutEntityTagsAndDatesNothingIsOverwritten) {
    PushOne();
    service.isWithoutTags = true;
    service.isWithoutDates = true;
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused a")));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1"));
}

TEST_P(PushPassTest, WithoutEntityTagsAndDatesAFileIsReplacedWhenThatIsForced) {
    PushOne();
    service.isWithoutTags = true;
    service.isWithoutDates = true;
    options.isForced = true;
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
}

TEST_P(PushPassTest, ForceOverwritesNothingThatIsSeenToHaveChanged) {
    PushOne();
    service.isWithoutTags = true;
    service.isWithoutDates = true;
    options.isForced = true;
    service.Put(Text("a"), "33");
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("33"));
}

TEST_P(PushPassTest, ADateThatIsNotListedIsAskedForAndTellsVersionsApart) {
    PushOne();
    service.isWithoutTags = true;
    service.isListingNoDates = true;
    Write("a", "2");
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("2"));
}

TEST_P(PushPassTest, FilesAndFoldersOfOneNameAreToldOf) {
    Write("a", "1");
    Write("f/b", "1");
    service.AddFolder(Text("a"));
    service.Put(Text("f"), "2");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Refused a"), Text("Refused f")}));
    EXPECT_EQ(service.Contents(), Files({{Text("f"), "2"}}));
}

TEST_P(PushPassTest, LinksAndUnreadableNamesAreToldOf) {
    ASSERT_TRUE(QFile::link(Text("/etc/passwd"), Path("link")));
    ASSERT_TRUE(QFile::link(Text("/etc"), Path("folder")));
    const QByteArray name = folder.path().toUtf8() + "/\xFF";
    ASSERT_EQ(mknod(name.constData(), S_IFREG | 0600, 0), 0);
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Refused \xEF\xBF\xBD"), Text("Skipped folder"), Text("Skipped link")}));
    EXPECT_TRUE(service.Contents().empty());
    EXPECT_EQ(unlink(name.constData()), 0);
}

TEST_P(PushPassTest, ATrialTellsTheSameAndChangesNothing) {
    PushOne();
    Write("a", "2");
    Write("f/b", "1");
    options.isDryRun = true;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    const QStringList told = Told();
    EXPECT_EQ(told, QStringList({Text("FolderSent f"), Text("Sent a"), Text("Sent f/b")}));
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "1"}}));
    EXPECT_FALSE(service.HasFolder(Text("f")));
    options.isDryRun = false;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), told);
}

TEST_P(PushPassTest, AFolderThatIsMissingIsMade) {
    service.isMissing = true;
    Write("a", "1");
    options.isDryRun = true;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    const QStringList told = Told();
    EXPECT_EQ(told, QStringList({Text("FolderSent ."), Text("Sent a")}));
    EXPECT_TRUE(service.isMissing);
    options.isDryRun = false;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), told);
    EXPECT_FALSE(service.isMissing);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "1"}}));
}

TEST_P(PushPassTest, ATrialTellsThatAMissingFolderHasNoPlace) {
    service.isMissing = true;
    service.hasNoPlace = true;
    options.isDryRun = true;
    EXPECT_THROW(Push(), HttpException);
}

TEST_P(PushPassTest, ATrialKeepsTheFoldersThatThePassKeeps) {
    options.deletes = true;
    for (const char* path : {"excluded/a", "deep/sub/a", "full/a", "gone/sub/a", "empty form/a", "stays"}) {
        Write(path, "1");
    }
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    for (const char* path : {"excluded", "deep", "full", "gone", "empty form"}) {
        ASSERT_TRUE(QDir(Path(path)).removeRecursively());
    }
    service.Put(Text("excluded/a.tmp"), "2");
    service.Put(Text("full/theirs"), "2");
    service.Remove(Text("empty form/a"));
    service.unlisted.insert(Text("empty form/form"));
    options.exclusion = ovsync::local::Exclusion({Text("*.tmp")});
    options.isDryRun = true;
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    const QStringList told = Told();
    EXPECT_THAT(told,
                testing::AllOf(testing::Contains(Text("Kept excluded")), testing::Contains(Text("Kept full")),
                               testing::Contains(Text("Kept empty form")), testing::Contains(Text("DeletedThere gone")),
                               testing::Contains(Text("DeletedThere deep/sub"))));
    options.isDryRun = false;
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), told);
}

TEST_P(PushPassTest, AFolderThatWasInStepIsNotMadeAgain) {
    PushOne();
    service.isMissing = true;
    EXPECT_THROW(Push(), HttpException);
    EXPECT_TRUE(service.isMissing);
    EXPECT_EQ(service.Count("MKCOL") + service.Count("PUT"), 0);
}

TEST_P(PushPassTest, AnUploadWithoutAnAnswerIsFoundOutByTheNextPush) {
    Write("a", "1");
    BeforeRequest("SENT", [] { throw TransactionError("PUT", QUrl(), Text("reset"), {}); });
    EXPECT_EQ(Push(), SyncOutcome::Failed);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), 1);
}

TEST_P(PushPassTest, APassThatIsStoppedRecordsWhatWasSent) {
    for (const char* name : {"a", "b", "c", "d"}) {
        Write(name, "1");
    }
    options.transfers = 1;
    service.onRequest = [this](const QString& method, const QString& path) {
        if (method == Text("PUT") && path == Text("c")) {
            isStopped = true;
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::Cancelled);
    isStopped = false;
    service.onRequest = nullptr;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents().size(), 4U);
}

/// Many small files, which are asked for together once they are sent.
class ManyFilesPushTest : public PushPassTest {
protected:
    ManyFilesPushTest() {
        for (int i = 0; i < Count; ++i) {
            Write(Name(i).toUtf8().constData(), QByteArray::number(i));
        }
    }

    static QString Name(int i) { return Text("f/") + QString::number(i).rightJustified(3, QLatin1Char('0')); }

    static constexpr int Count = 300;
};

TEST_P(ManyFilesPushTest, FarFewerQuestionsAreAskedThanFilesSent) {
    service.isPlain = true;
    service.listsTags = true;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Contents());
    EXPECT_LT(service.Count("FIND") + service.Count("LIST"), Count / 4);
    service.ForgetCounts();
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT") + service.Count("GET"), 0);
}

TEST_P(ManyFilesPushTest, TheServiceItselfIsAskedAsSeldom) {
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Contents());
    EXPECT_EQ(service.Count("PUT"), Count);
    EXPECT_LT(service.Count("FIND") + service.Count("LIST"), Count / 4);
}

TEST_P(ManyFilesPushTest, AFolderOfManyOtherFilesIsNotListedForAFew) {
    ASSERT_EQ(Push(), SyncOutcome::InStep);
    service.ForgetCounts();
    for (int i = 0; i < 5; ++i) {
        Write(Name(i).toUtf8().constData(), "changed");
    }
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Contents());
    // That of the whole tree.
    EXPECT_EQ(service.Count("LIST"), service.tellsChanges ? 0 : 1);
}

TEST_P(ManyFilesPushTest, WhatIsSomethingElseRightAfterwardsIsAConflict) {
    for (const bool isPlain : {false, true}) {
        service.isPlain = isPlain;
        const QString name = Name(isPlain ? 7 : 5);
        Write(name.toUtf8().constData(), "mine");
        service.onRequest = [this, name](const QString& method, const QString& path) {
            if (method == Text("SENT") && path == name) {
                service.Put(name, "theirs, longer");
            }
        };
        EXPECT_EQ(Push(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told().filter(Text("Conflict")), QStringList({Text("Conflict ") + name}));
        service.onRequest = nullptr;
        EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
        EXPECT_EQ(Content(name.toUtf8().constData()), QByteArray("mine"));
        Remove(name.toUtf8().constData());
        service.Remove(Text("f"));
        ASSERT_EQ(Pull(), SyncOutcome::LeftSome);
    }
}

TEST_P(ManyFilesPushTest, WhereAFolderCannotBeListedEachFileIsAskedFor) {
    service.onRequest = [](const QString& method, const QString& path) {
        if (method == Text("LIST") && path == Text("f")) {
            throw HttpException(Text("forbidden"), 403, QUrl());
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("FIND"), Count);
    EXPECT_EQ(service.Contents(), Contents());
}

TEST_P(ManyFilesPushTest, OnceConditionsAreSeenToBeKnownANewFileIsNotLookedAtBefore) {
    service.isPlain = true;
    service.listsTags = true;
    service.Put(Text("theirs"), "1");
    options.transfers = 1;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), Count + 1);
    const int looks = service.Count("HEAD");
    EXPECT_LT(looks, Count);
    service.ignoresConditions = true;
    for (int i = 0; i < Count; ++i) {
        Write((Name(i) + Text(" again")).toUtf8().constData(), "1");
    }
    service.ForgetCounts();
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told().filter(Text("Noted")).size(), 1);
    EXPECT_GE(service.Count("HEAD"), Count);
}

TEST_P(ManyFilesPushTest, APassThatIsStoppedRecordsWhatWasSent) {
    service.onRequest = [this](const QString& method, const QString& path) {
        if (method == Text("PUT") && path == Name(200)) {
            isStopped = true;
        }
    };
    EXPECT_EQ(Push(), SyncOutcome::Cancelled);
    service.onRequest = nullptr;
    isStopped = false;
    const int sent = static_cast<int>(service.Contents().size());
    EXPECT_GT(sent, 0);
    service.ForgetCounts();
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), Count - sent);
    EXPECT_EQ(service.Contents(), Contents());
}

INSTANTIATE_TEST_SUITE_P(TellsChanges, PushPassTest, testing::Bool(), testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(TellsChanges, LockingPushTest, testing::Bool(), testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(TellsChanges, ManyFilesPushTest, testing::Bool(), testing::PrintToStringParamName());

}  // namespace
