#include "client/sync/both/TwoWayPass.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>

#include "client/store/RecordDatabase.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::pass::DeletionLimit;
using ovsync::pass::SyncOptions;
using ovsync::pass::WrongFolder;
using ovsync::report::SyncEvent;
using ovsync::report::SyncOutcome;
using ovsync::store::RecordDatabase;
using ovsync::wire::TransactionError;
using sync::http::HttpException;
using tests::Text;
using Files = std::map<QString, QByteArray>;

class TwoWayPassTest : public tests::EitherServiceTest {
protected:
    /// Of a file that is deleted here, and changes there at a moment of the pass.
    void ExpectThatAChangeStays(const char* moment) {
        Begin({"a", "stays"});
        Remove("a");
        BeforeRequest(moment, [this] { service.Put(Text("a"), "theirs"); });
        EXPECT_EQ(Sync(), SyncOutcome::LeftSome) << moment;
        EXPECT_EQ(Told(), QStringList(Text("Kept a"))) << moment;
        EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
        EXPECT_EQ(Sync(), SyncOutcome::InStep) << moment;
        EXPECT_EQ(Content("a"), QByteArray("theirs"));
        Remove("a");
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
    }
};

TEST_P(TwoWayPassTest, TheRecordsOfAnotherFolderAreNotTakenForThoseOfThisOne) {
    Begin({"a"});
    service.Put(Text("a"), "2");
    const QString away = folder.path() + Text(".away");
    ASSERT_TRUE(QDir().rename(folder.path(), away));
    ASSERT_TRUE(QDir().mkpath(folder.path()));
    EXPECT_THROW(Sync(), WrongFolder);
    ASSERT_TRUE(QDir(folder.path()).removeRecursively());
    ASSERT_TRUE(QDir().rename(away, folder.path()));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), "2");
    ExpectInStep();
}

TEST_P(TwoWayPassTest, TheServicesFolderIsMadeForAnEmptyOneToo) {
    service.isMissing = true;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(service.isMissing);
    service.isMissing = true;
    EXPECT_THROW(Sync(), HttpException) << "it was in step with it";
}

TEST_P(TwoWayPassTest, WhatIsNewOnEitherSideComesToTheOther) {
    Write("f/mine", "1");
    service.Put(Text("g/theirs"), "2");
    disk.MakeFolder(Text("empty here"));
    service.AddFolder(Text("empty there"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("f/mine"), "1"}, {Text("g/theirs"), "2"}}));
    EXPECT_TRUE(service.HasFolder(Text("empty here")));
    EXPECT_TRUE(QDir(Path("empty there")).exists());
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AFirstPassTransfersOnlyWhatDiffers) {
    for (const char* same : {"a", "b", "c"}) {
        Write(same, "same");
        service.Put(Text(same), "same");
    }
    service.Put(Text("theirs"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), 0);
    EXPECT_EQ(service.Count("GET"), 1);
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AFirstPassComparesTheContentItselfWhereThereAreNoChecksums) {
    service.isPlain = true;
    for (const char* same : {"a", "b", "c"}) {
        Write(same, "same");
        service.Put(Text(same), "same");
    }
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("PUT"), 0);
    EXPECT_EQ(service.Count("GET"), 3);
    ExpectInStep();
}

TEST_P(TwoWayPassTest, ChangesTravelBothWays) {
    Begin({"a", "b"});
    Write("a", "mine");
    service.Put(Text("b"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "mine"}, {Text("b"), "theirs"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, DeletionsTravelBothWaysWithTheirFolders) {
    Begin({"f/g/a", "h/i/b", "stays"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    service.Remove(Text("h"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Deleted h"), Text("Deleted h/i"), Text("Deleted h/i/b"),
                                   Text("DeletedThere f"), Text("DeletedThere f/g"), Text("DeletedThere f/g/a")}));
    EXPECT_EQ(service.Contents(), Files({{Text("stays"), "1 of stays"}}));
    EXPECT_FALSE(service.HasFolder(Text("f")));
    EXPECT_FALSE(QDir(Path("h")).exists());
    ExpectInStep();
}

TEST_P(TwoWayPassTest, DeletionsTravelOnAServerWithoutVersions) {
    service.isPlain = true;
    Begin({"f/a", "stays"});
    // What was sent is in doubt until its second is over.
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents().size(), 1U);
    EXPECT_FALSE(service.HasFolder(Text("f")));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AChangeWinsOverADeletion) {
    Begin({"f/gone here", "g/gone there"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    service.Put(Text("f/gone here"), "theirs");
    service.Remove(Text("g"));
    Write("g/gone there", "mine");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("f/gone here"), "theirs"}, {Text("g/gone there"), "mine"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, WhatIsNewInADeletedFolderKeepsIt) {
    Begin({"f/a", "g/b", "c"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    service.Put(Text("f/new"), "theirs");
    service.Remove(Text("g"));
    Write("g/new", "mine");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("c"), "1 of c"}, {Text("f/new"), "theirs"}, {Text("g/new"), "mine"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, WhatIsPutIntoAFolderInTheMomentInWhichItIsDeletedStays) {
    for (const char* moment : {"MOVE", "RMCOL"}) {
        Begin({"f/a", "stays"});
        ASSERT_TRUE(QDir(Path("f")).removeRecursively());
        BeforeRequest(moment, [this] { service.Put(Text("f/new"), "theirs"); });
        Sync();
        EXPECT_EQ(service.Contents(), Files({{Text("f/new"), "theirs"}, {Text("stays"), "1 of stays"}})) << moment;
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Content("f/new"), "theirs");
        ExpectInStep();
        service.Remove(Text("f"));
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
    }
}

TEST_P(TwoWayPassTest, AnEmptyFolderIsDeletedThoughTheServerRefusesThatOnce) {
    Begin({"f/a", "stays"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    service.onRequest = [this](const QString& method, const QString&) {
        if (method == Text("RMCOL") && service.Count("RMCOL") == 1) {
            throw HttpException(Text("no"), 424, QUrl());
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("RMCOL"), 2);
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AFolderThatTheServerRefusesToDeleteTwiceIsToldOf) {
    Begin({"f/a", "stays"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("RMCOL")) {
            throw HttpException(Text("no"), 424, QUrl());
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Count("RMCOL"), 2);
    service.onRequest = nullptr;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AFolderWhoseDeletionWasInterruptedIsDeleted) {
    Begin({"f/a", "stays"});
    const QString aside = Text(".0123456789abcdef0123456789abcdef.{SyncTemp}");
    service.AddFolder(aside);
    service.Put(Text("f/") + aside + Text("/new"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_FALSE(service.HasFolder(aside));
    EXPECT_EQ(Told(), QStringList(Text("Refused f/") + aside + Text("/new")));
    EXPECT_EQ(service.Content(Text("f/") + aside + Text("/new")), "theirs");
}

TEST_P(TwoWayPassTest, AFolderIsDeletedThereOnAServerThatMovesNone) {
    Begin({"f/a", "stays"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("MOVE")) {
            throw HttpException(Text("no"), 403, QUrl());
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(service.HasFolder(Text("f")));
}

TEST_P(TwoWayPassTest, AFolderThatHoldsWhatIsNotListedStays) {
    Begin({"f/a", "stays"});
    service.unlisted.insert(Text("f/form"));
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("DeletedThere f/a"), Text("Kept f")}));
    EXPECT_TRUE(service.HasFolder(Text("f")));
    EXPECT_EQ(service.Count("RMCOL"), 0);
    // It is the service's own from now on.
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_TRUE(QDir(Path("f")).exists());
}

TEST_P(TwoWayPassTest, WhatChangesThereRightBeforeItIsDeletedStays) {
    for (const char* moment : {"HEAD", "FIND", "DELETE"}) {
        ExpectThatAChangeStays(moment);
    }
}

TEST_P(TwoWayPassTest, WhatChangesThereRightBeforeItIsDeletedStaysOnAServerWithoutVersions) {
    service.isPlain = true;
    service.listsTags = true;
    for (const char* moment : {"HEAD", "DELETE"}) {
        ExpectThatAChangeStays(moment);
    }
}

TEST_P(TwoWayPassTest, WhatIsHereAgainIsNotDeletedThere) {
    Begin({"a", "stays"});
    Remove("a");
    BeforeRequest("HEAD", [this] { Write("a", "again"); });
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1 of a"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("again"));
}

TEST_P(TwoWayPassTest, NothingIsDeletedThereBeforeEverythingElseCouldBeDone) {
    Begin({"a", "stays"});
    Remove("a");
    Write("new", "1");
    service.onRequest = [](const QString& method, const QString& path) {
        if (method == Text("PUT") && path == Text("new")) {
            throw TransactionError("PUT", QUrl(), Text("reset"), {});
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::Failed);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1 of a"));
    service.onRequest = nullptr;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("(none)"));
}

TEST_P(TwoWayPassTest, TooManyDeletionsThereAreNotBelieved) {
    options.deletionLimit = DeletionLimit();
    Begin({"a", "b"});
    Remove("a");
    Remove("b");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Kept .")));
    EXPECT_EQ(service.Contents().size(), 2U);
    options.deletionLimit = *DeletionLimit::Read(Text("2"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_TRUE(service.Contents().empty());
}

TEST_P(TwoWayPassTest, TooManyDeletionsNameTheirCommandOnlyWhereNothingElseIsInTheWay) {
    options.deletionLimit = DeletionLimit();
    Begin({"a", "b", "c", "d"});
    for (const char* path : {"a", "b"}) {
        Remove(path);
    }
    for (const char* path : {"c", "d"}) {
        service.Remove(Text(path));
    }
    options.deletionLimit = *DeletionLimit::Read(Text("1"));
    const auto kept = [this] {
        QStringList details;
        for (const SyncEvent& event : events) {
            if (event.kind == SyncEvent::Kind::Kept) {
                details.append(event.detail);
            }
        }
        return details;
    };
    Write("new", "1");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("PUT")) {
            throw HttpException(Text("no room"), 507, QUrl());
        }
    };
    EXPECT_NE(Sync(), SyncOutcome::InStep);
    ASSERT_EQ(kept().size(), 2);
    for (const QString& detail : kept()) {
        EXPECT_FALSE(detail.contains(Text("--max-delete"))) << detail.toStdString();
        EXPECT_TRUE(detail.contains(Text("First mend what else is named"))) << detail.toStdString();
    }
    service.onRequest = nullptr;
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    ASSERT_EQ(kept().size(), 2);
    for (const QString& detail : kept()) {
        EXPECT_TRUE(detail.contains(Text("sync --max-delete 2"))) << detail.toStdString();
    }
}

TEST_P(TwoWayPassTest, DeletionsOfBothSidesWaitUntilAllElseIsTransferred) {
    Begin({"a", "b"});
    Remove("a");
    service.Remove(Text("b"));
    Write("new", "1");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("PUT")) {
            throw HttpException(Text("no room"), 507, QUrl());
        }
    };
    EXPECT_NE(Sync(), SyncOutcome::InStep);
    const QStringList told = Told();
    EXPECT_TRUE(told.contains(Text("Waiting a")) && told.contains(Text("Waiting b"))) << told.join(',').toStdString();
    service.onRequest = nullptr;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), (std::map<QString, QByteArray>{{Text("new"), "1"}}));
}

TEST_P(TwoWayPassTest, AnotherFolderInThePlaceOfThisOneDeletesNothingThere) {
    options.deletionLimit = DeletionLimit();
    Begin({"a", "b", "c", "d"});
    RecordDatabase(folder.path(), RecordDatabase::Access::Change).WriteSetting(Text("folder"), Text("of another disk"));
    Remove("a");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Kept .")));
    EXPECT_EQ(service.Contents().size(), 4U);
    options.deletionLimit = *DeletionLimit::Read(Text("1"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents().size(), 3U);
    options.deletionLimit = DeletionLimit();
    Remove("b");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents().size(), 2U);
}

TEST_P(TwoWayPassTest, AFolderWithoutItsRecordsDeletesNothing) {
    Begin({"a", "b"});
    ASSERT_TRUE(QDir(Path(".ovsync")).removeRecursively());
    Remove("a");
    service.Remove(Text("b"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "1 of a"}, {Text("b"), "1 of b"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, WhatLiesBehindALinkStaysThere) {
    Begin({"f/a", "stays"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    ASSERT_TRUE(QFile::link(Text("/tmp"), Path("f")));
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused f")));
    EXPECT_EQ(Details(),
              QStringList(Text("it is a link here and a folder on the service; rename or remove one of the two")));
    EXPECT_EQ(service.Contents().size(), 2U);
}

TEST_P(TwoWayPassTest, WhatIsNeitherFileNorFolderHereIsNamedForWhatItIs) {
    Begin({"stays"});
    ASSERT_EQ(mkfifo(Path("pipe").toUtf8().constData(), 0600), 0);
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Details(), QStringList(Text("it is a pipe, a socket or a device, which is never synced")));
    service.Put(Text("pipe"), "1");
    for (const bool isPull : {false, true}) {
        EXPECT_EQ(isPull ? Pull() : Sync(), SyncOutcome::LeftSome);
        EXPECT_EQ(Details(), QStringList(Text("it is a pipe, a socket or a device here and a file on the service; "
                                              "rename or remove one of the two")));
    }
}

TEST_P(TwoWayPassTest, FilesAndFoldersTakeEachOthersPlacesOnBothSides) {
    Begin({"a", "b", "f/x", "g/x"});
    Remove("a");
    Write("a/inside", "1");
    service.Remove(Text("b"));
    service.Put(Text("b/inside"), "2");
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    Write("f", "3");
    service.Remove(Text("g"));
    service.Put(Text("g"), "4");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(),
              Files({{Text("a/inside"), "1"}, {Text("b/inside"), "2"}, {Text("f"), "3"}, {Text("g"), "4"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AFileAgainstAFolderIsToldOfAndBothStay) {
    Write("a", "1");
    Write("f/x", "1");
    service.Put(Text("a/y"), "2");
    service.Put(Text("f"), "2");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Refused a"), Text("Refused f")}));
    EXPECT_EQ(Contents(), Files({{Text("a"), "1"}, {Text("f/x"), "1"}}));
    EXPECT_EQ(service.Contents(), Files({{Text("a/y"), "2"}, {Text("f"), "2"}}));
}

TEST_P(TwoWayPassTest, AConflictKeepsBothAndEndsByDeletingOne) {
    Begin({"a", "b"});
    for (const char* path : {"a", "b"}) {
        Write(path, "mine");
        service.Put(Text(path), "theirs");
    }
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Conflict a"), Text("Conflict b")}));
    EXPECT_EQ(Contents().size(), 4U);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "theirs"}, {Text("b"), "theirs"}}));
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 4U);
    for (const auto& file : Contents()) {
        if (file.first.startsWith(Text("a (from"))) {
            Remove(file.first.toUtf8().constData());
        } else if (file.first.startsWith(Text("b (from"))) {
            Remove("b");
            ASSERT_TRUE(QFile::rename(folder.filePath(file.first), Path("b")));
        }
    }
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "mine"}, {Text("b"), "theirs"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, AConflictEndsWithItsCopyInTheTrashWhenTheOwnFileIsDeleted) {
    Begin({"a"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    Remove("a");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "theirs"}}));
    EXPECT_THAT(TrashContents(), testing::Contains("theirs"));
    ExpectInStep();
    // Nothing is left that could end a later conflict over the same version.
    service.Put(Text("a"), "theirs again");
    Write("a", "mine again");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs again"));
}

TEST_P(TwoWayPassTest, ACopyThatSomebodyWroteIntoIsAFileOfItsOwnWhenTheConflictIsOver) {
    Begin({"a"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    QString copy;
    for (const auto& file : Contents()) {
        copy = file.first.startsWith(Text("a (from")) ? file.first : copy;
    }
    Write(copy.toUtf8().constData(), "theirs and mine");
    Remove("a");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "theirs"}, {copy, "theirs and mine"}}));
    ExpectInStep();
}

TEST_P(TwoWayPassTest, TheCopyOfAnOlderVersionGoesWhenThereIsOneOfANewer) {
    Begin({"a"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    service.Put(Text("a"), "theirs again");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    const Files both = Contents();
    EXPECT_EQ(both.size(), 2U);
    EXPECT_EQ(both.rbegin()->second, "theirs again");
    EXPECT_THAT(TrashContents(), testing::ElementsAre("theirs"));
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents(), both);
    Remove(both.rbegin()->first.toUtf8().constData());
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "mine"}}));
}

TEST_P(TwoWayPassTest, TheCopyOfAnOlderVersionStaysWhenSomebodyWroteIntoIt) {
    Begin({"a"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    const QString copy = Contents().rbegin()->first;
    Write(copy.toUtf8().constData(), "theirs and mine");
    service.Put(Text("a"), "theirs again");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 3U);
    EXPECT_EQ(Content(copy.toUtf8().constData()), QByteArray("theirs and mine"));
}

TEST_P(TwoWayPassTest, AFolderThatTheServiceDeletedGoesWithTheCopyOfAConflictThatIsOver) {
    Begin({"b", "f/a"});
    Write("f/a", "mine");
    service.Put(Text("f/a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    Remove("f/a");
    service.Remove(Text("f"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("b"), "1 of b"}}));
    EXPECT_FALSE(QFile::exists(Path("f")));
    EXPECT_THAT(TrashContents(), testing::Contains("theirs"));
}

TEST_P(TwoWayPassTest, ACopyOfAConflictThatIsOverGoesAsSoonAsAllCanBeTransferred) {
    Begin({"a", "b"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    Remove("a");
    service.Put(Text("b"), "2");
    service.onRequest = [](const QString& method, const QString& path) {
        if (method == Text("GET") && path == Text("b")) {
            throw TransactionError("GET", QUrl(), Text("reset"), {});
        }
    };
    EXPECT_EQ(SyncPlaces({Text("a")}), SyncOutcome::Failed);
    EXPECT_EQ(Contents().size(), 3U);
    service.onRequest = nullptr;
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "theirs"}, {Text("b"), "2"}}));
}

TEST_P(TwoWayPassTest, ACopyStaysWhileItsFileIsInTheWayOfAFolder) {
    Begin({"a"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    service.Remove(Text("a"));
    service.Put(Text("a/b"), "1");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Contents().size(), 2U);
}

TEST_P(TwoWayPassTest, AConflictCanBeWonByEitherSideAndTheOtherVersionIsInTheTrash) {
    for (const bool isPlain : {false, true}) {
        service.isPlain = isPlain;
        for (const auto conflicts : {SyncOptions::Conflicts::Here, SyncOptions::Conflicts::There}) {
            Begin({"a"});
            Write("a", "mine");
            service.Put(Text("a"), "theirs");
            options.conflicts = conflicts;
            EXPECT_EQ(Sync(), SyncOutcome::InStep);
            const bool wins = conflicts == SyncOptions::Conflicts::Here;
            EXPECT_EQ(Contents(), Files({{Text("a"), wins ? "mine" : "theirs"}}));
            EXPECT_EQ(service.Contents(), Contents());
            EXPECT_THAT(TrashContents(), testing::Contains(QByteArray(wins ? "theirs" : "mine")));
            EXPECT_EQ(Sync(), SyncOutcome::InStep);
            EXPECT_TRUE(QDir(Path(".ovsync/trash")).removeRecursively());
            options.conflicts = SyncOptions::Conflicts::KeepBoth;
            Remove("a");
            ASSERT_EQ(Sync(), SyncOutcome::InStep);
        }
    }
}

TEST_P(TwoWayPassTest, WhicheverSideWinsTheSameContentIsNotReplaced) {
    service.isPlain = true;
    for (const auto conflicts : {SyncOptions::Conflicts::Here, SyncOptions::Conflicts::There}) {
        const char* const name = conflicts == SyncOptions::Conflicts::Here ? "here" : "there";
        Write(name, "same");
        service.Put(Text(name), "same");
        const quint64 inode = disk.Look(Text(name))->fingerprint.inode;
        options.conflicts = conflicts;
        for (const bool isDryRun : {true, false, false}) {
            options.isDryRun = isDryRun;
            EXPECT_EQ(Sync(), SyncOutcome::InStep);
            EXPECT_TRUE(events.isEmpty());
        }
        EXPECT_EQ(disk.Look(Text(name))->fingerprint.inode, inode);
    }
    EXPECT_TRUE(TrashContents().empty());
    EXPECT_EQ(service.Count("PUT"), 0);
}

TEST_P(TwoWayPassTest, TheNewerVersionCanWin) {
    options.conflicts = SyncOptions::Conflicts::Newer;
    Begin({"a"});
    // The service's clock stands in the past.
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("mine"));
    Write("a", "mine again");
    QFile file(Path("a"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000), QFileDevice::FileModificationTime));
    file.close();
    service.Put(Text("a"), "theirs again");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("theirs again"));
}

TEST_P(TwoWayPassTest, AnUnchangedPassIsOneRequest) {
    Begin({"a", "f/b"});
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    service.ForgetCounts();
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count(GetParam() ? "REPORT" : "LIST"), 1);
    EXPECT_EQ(service.CountAll(), 1);
    EXPECT_TRUE(events.isEmpty());
    for (const char* path : {"new", "a"}) {
        Write(path, "2");
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(service.Content(Text(path)), QByteArray("2"));
    }
}

TEST_P(TwoWayPassTest, ATrialTellsTheSameAndChangesNothing) {
    Begin({"changed", "gone/here", "gone there", "stays"});
    Write("changed", "2");
    Write("new/mine", "2");
    service.Put(Text("new/theirs"), "2");
    ASSERT_TRUE(QDir(Path("gone")).removeRecursively());
    service.Remove(Text("gone there"));
    const Files here = Contents();
    const Files there = service.Contents();
    options.isDryRun = true;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    const QStringList told = Told();
    EXPECT_EQ(Contents(), here);
    EXPECT_EQ(service.Contents(), there);
    options.isDryRun = false;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), told);
    ExpectInStep();
}

TEST_P(TwoWayPassTest, ATrialComparesContentsWhereThereAreNoChecksums) {
    service.isPlain = true;
    for (const char* name : {"same", "other"}) {
        Write(name, "1");
        service.Put(Text(name), name == Text("same") ? "1" : "2");
    }
    options.isDryRun = true;
    for (const auto conflicts : {SyncOptions::Conflicts::KeepBoth, SyncOptions::Conflicts::Here}) {
        options.conflicts = conflicts;
        Sync();
        QStringList paths;
        for (const ovsync::report::SyncEvent& event : events) {
            paths.append(event.path);
        }
        EXPECT_EQ(paths, QStringList(Text("other")));
    }
    options.isDryRun = false;
    options.conflicts = SyncOptions::Conflicts::KeepBoth;
    Sync();
    EXPECT_EQ(Told(), QStringList(Text("Conflict other")));
}

TEST_P(TwoWayPassTest, APushDeletesThereWhenItIsTold) {
    Begin({"f/a", "b", "c"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    Remove("b");
    Write("b/inside", "1");
    options.deletes = true;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("DeletedThere b"), Text("DeletedThere f"), Text("DeletedThere f/a"),
                                   Text("FolderSent b"), Text("Sent b/inside")}));
    EXPECT_EQ(service.Contents(), Files({{Text("b/inside"), "1"}, {Text("c"), "1 of c"}}));
    options.deletionLimit = DeletionLimit();
    Remove("c");
    Remove("b/inside");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents().size(), 2U);
}

TEST_P(TwoWayPassTest, AFolderThatWasDeletedThereIsNotMadeAgainForWhatIsNeverSynced) {
    for (const char* left : {"f/link", "f/g/link"}) {
        Begin({"f/g/a", "stays"});
        ASSERT_TRUE(QFile::link(Text("/"), Path(left)));
        service.Remove(Text("f"));
        for (int pass = 0; pass < 3; ++pass) {
            EXPECT_EQ(Sync(), SyncOutcome::InStep);
            EXPECT_FALSE(service.HasFolder(Text("f"))) << pass;
            EXPECT_TRUE(QFileInfo(Path(left)).isSymLink());
        }
        Write("f/new", "1");
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(service.Content(Text("f/new")), QByteArray("1"));
        ASSERT_TRUE(QDir(Path("f")).removeRecursively());
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
    }
}

INSTANTIATE_TEST_SUITE_P(TellsChanges, TwoWayPassTest, testing::Bool(), testing::PrintToStringParamName());

}  // namespace
