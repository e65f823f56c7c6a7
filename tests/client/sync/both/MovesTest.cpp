#include "client/sync/both/Moves.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>

#include "host/http/HttpException.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::report::SyncOutcome;
using ::sync::http::HttpException;
using tests::Text;
using Files = std::map<QString, QByteArray>;

class MovesTest : public tests::EitherServiceTest {
protected:
    void Rename(const char* from, const char* to) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(Path(to)).path()));
        ASSERT_TRUE(QDir().rename(Path(from), Path(to))) << from;
    }

    int Transfers() const { return service.Count("PUT") + service.Count("GET"); }
};

TEST_P(MovesTest, AFileThatIsRenamedHereIsMovedThere) {
    for (const bool isPlain : {false, true}) {
        service.isPlain = isPlain;
        service.listsTags = isPlain;
        Begin({"a", "f/b"});
        Rename("a", "g/h/c");
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Told(), QStringList({Text("FolderSent g"), Text("FolderSent g/h"), Text("MovedThere g/h/c")}));
        EXPECT_EQ(service.Count("MOVE"), 1);
        EXPECT_EQ(service.Count("PUT") + service.Count("DELETE"), 0);
        ExpectInStep();
        EXPECT_EQ(service.Count("GET"), 0);
        Remove("g/h/c");
        ASSERT_TRUE(disk.RemoveFolder(Text("g/h")));
        ASSERT_TRUE(disk.RemoveFolder(Text("g")));
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
    }
}

TEST_P(MovesTest, ATrialTellsOfAMoveAloneWhereOnlyTheContentTellsWhatAFileIs) {
    service.isPlain = true;
    service.isWithoutTags = true;
    // The second in which the files were written is not over.
    service.secondsAhead = -30;
    Begin({"a", "f/b"});
    Rename("a", "c");
    Rename("f", "g");
    for (const bool isDryRun : {true, false}) {
        options.isDryRun = isDryRun;
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Told(), QStringList({Text("MovedThere c"), Text("MovedThere g")}));
        EXPECT_EQ(events.size(), 2);
    }
    EXPECT_EQ(service.Count("PUT"), 0);
}

TEST_P(MovesTest, AFileThatIsRenamedThereIsMovedHere) {
    Begin({"a", "b"});
    service.AddFolder(Text("f"));
    service.Move(Text("a"), Text("f/c"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("FolderMade f"), Text("Moved f/c")}));
    EXPECT_EQ(Transfers(), 0);
    ExpectInStep();
}

TEST_P(MovesTest, AFolderThatIsRenamedHereIsOneRequestThere) {
    Begin({"f/a", "f/g/b", "f/g/c"});
    Rename("f", "h");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("MovedThere h")));
    EXPECT_EQ(service.Count("MOVE"), 1);
    EXPECT_EQ(Transfers() + service.Count("DELETE") + service.Count("MKCOL"), 0);
    ExpectInStep();
}

TEST_P(MovesTest, AFolderThatIsRenamedThereIsRenamedHere) {
    Begin({"f/a", "f/g/b", "f/g/c"});
    service.Move(Text("f"), Text("h"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("Moved h")));
    EXPECT_EQ(Transfers(), 0);
    EXPECT_TRUE(TrashContents().empty());
    ExpectInStep();
}

TEST_P(MovesTest, AFolderThatThisSideMadeThereIsKnownAtOnce) {
    Write("f/a", "1");
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    service.Move(Text("f"), Text("h"));
    service.ForgetCounts();
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList(Text("Moved h")));
    EXPECT_EQ(Transfers(), 0);
    ExpectInStep();
}

TEST_P(MovesTest, FoldersAndFilesMoveInOnePassOnBothSides) {
    Begin({"f/a", "f/b", "g/c", "g/d", "e"});
    Rename("f", "h");
    Rename("h/a", "h/renamed");
    Rename("e", "h/e");
    service.Move(Text("g"), Text("i"));
    service.Move(Text("i/c"), Text("i/renamed"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Moved i"), Text("Moved i/renamed"), Text("MovedThere h"),
                                   Text("MovedThere h/e"), Text("MovedThere h/renamed")}));
    EXPECT_EQ(Transfers(), 0);
    ExpectInStep();
}

TEST_P(MovesTest, WhereBothSidesMovedItTheServicesPlaceCounts) {
    Begin({"a", "f/b"});
    Rename("a", "mine");
    service.Move(Text("a"), Text("theirs"));
    Rename("f", "my folder");
    service.Move(Text("f"), Text("their folder"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Moved their folder"), Text("Moved theirs")}));
    EXPECT_EQ(Contents(), Files({{Text("their folder/b"), "1 of f/b"}, {Text("theirs"), "1 of a"}}));
    EXPECT_EQ(Transfers(), 0);
    ExpectInStep();
}

TEST_P(MovesTest, TheSameMoveOnBothSidesIsOnlyRecorded) {
    Begin({"a", "f/b"});
    Rename("a", "c");
    service.Move(Text("a"), Text("c"));
    Rename("f", "g");
    service.Move(Text("f"), Text("g"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_TRUE(Told().isEmpty());
    EXPECT_EQ(Transfers(), 0);
    ExpectInStep();
}

TEST_P(MovesTest, ChangesGoWithTheMove) {
    Begin({"f/a", "f/b", "g/c"});
    Rename("f", "h");
    Write("h/a", "mine");
    service.Put(Text("f/b"), "theirs");
    service.Put(Text("f/new"), "new");
    service.Move(Text("g"), Text("i"));
    Write("g/c", "changed");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(
        Contents(),
        Files({{Text("h/a"), "mine"}, {Text("h/b"), "theirs"}, {Text("h/new"), "new"}, {Text("i/c"), "changed"}}));
    ExpectInStep();
}

TEST_P(MovesTest, AFileThatIsRenamedAndChangedThereIsSoHere) {
    for (const char* path : {"a", "b"}) {
        Write(path, "1");
        // What is as young as the test is read by every pass.
        QFile file(Path(path));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000), QFileDevice::FileModificationTime));
    }
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    service.Put(Text("a"), "changed, then renamed");
    service.Move(Text("a"), Text("c"));
    service.Move(Text("b"), Text("d"));
    service.Put(Text("d"), "renamed, then changed");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("c"), "changed, then renamed"}, {Text("d"), "renamed, then changed"}}));
    ExpectInStep();
}

TEST_P(MovesTest, NothingIsMovedOverWhatIsThere) {
    Begin({"a", "f/b", "stays"});
    Rename("a", "c");
    Rename("f", "g");
    service.Put(Text("c"), "theirs");
    service.Put(Text("g/x"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("c")), QByteArray("theirs"));
    EXPECT_EQ(service.Content(Text("g/x")), QByteArray("theirs"));
    EXPECT_EQ(service.Content(Text("g/b")), QByteArray("1 of f/b"));
    EXPECT_EQ(Content("c"), QByteArray("1 of a"));
    EXPECT_EQ(Content("g/x"), QByteArray("theirs"));
}

TEST_P(MovesTest, WhatTheServiceRefusesToMoveIsTransferred) {
    Begin({"a", "f/b", "stays"});
    Rename("a", "c");
    Rename("f", "g");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("MOVE")) {
            throw HttpException(Text("no"), 403, QUrl());
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    service.onRequest = nullptr;
    ExpectInStep();
}

TEST_P(MovesTest, ANewFolderWithTheNumberOfADeletedOneIsNoMove) {
    Begin({"f/a", "stays"});
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    // Whatever its number is.
    Write("g/b", "other");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(Told().contains(Text("MovedThere g")));
    EXPECT_EQ(Content("g/b"), "other");
    ExpectInStep();
}

TEST_P(MovesTest, ARenameWithoutItsRecordIsFoundAgain) {
    Begin({"a", "f/b", "g/c", "d"});
    // As a pass that died right after it had moved them leaves both sides.
    Rename("a", "x");
    service.Move(Text("a"), Text("x"));
    Rename("f", "y");
    service.Move(Text("f"), Text("y"));
    service.ForgetCounts();
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Transfers(), 0);
    ExpectInStep();
}

TEST_P(MovesTest, ATrialOfMovesTellsTheSameAndChangesNothing) {
    Begin({"a", "f/b", "g/c"});
    Rename("a", "x");
    Rename("f", "y");
    service.Move(Text("g"), Text("z"));
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

TEST_P(MovesTest, ATrialTellsThatAFolderGoesOutOfWhichAFileWasMoved) {
    Begin({"f/a", "f/b", "f/c", "k", "l", "m"});
    Rename("f/a", "moved");
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    options.isDryRun = true;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    const QStringList told = Told();
    EXPECT_TRUE(told.contains(Text("DeletedThere f")));
    options.isDryRun = false;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), told);
    ExpectInStep();
}

TEST_P(MovesTest, AFolderIsNotMovedAsAWholeWithASyncedFolderInIt) {
    Begin({"f/a", "f/inner/b"});
    ASSERT_TRUE(QDir().mkpath(Path("f/inner/.ovsync")));
    Rename("f", "g");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents(), Files({{Text("g/a"), "1 of f/a"}}));
    EXPECT_FALSE(service.HasFolder(Text("g/inner")));
    EXPECT_EQ(Content("g/inner/b"), QByteArray("1 of f/inner/b"));
}

TEST_P(MovesTest, AConflictMovesWithItsFile) {
    Begin({"f/a", "f/b"});
    Write("f/a", "mine");
    service.Put(Text("f/a"), "theirs");
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    ASSERT_EQ(Sync(), SyncOutcome::LeftSome);
    Rename("f", "g");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList({Text("Conflict g/a"), Text("MovedThere g")}));
    EXPECT_EQ(Contents().size(), 3U);
    EXPECT_EQ(service.Contents().size(), 2U);
}

TEST_P(MovesTest, WhatWasDeletedInAMovedFolderGoesAlsoAfterAPassThatBrokeOffRightAfterTheMove) {
    for (const bool isMovedHere : {false, true}) {
        Begin({"f/n/x", "f/y", "stays"});
        if (isMovedHere) {
            Rename("f", "g");
        }
        service.Remove(Text("f/n"));
        if (!isMovedHere) {
            service.Move(Text("f"), Text("g"));
        }
        service.Put(Text("new"), "1");
        service.onRequest = [this](const QString& method, const QString&) { isStopped = method == Text("GET"); };
        EXPECT_EQ(Sync(), SyncOutcome::Cancelled);
        isStopped = false;
        service.onRequest = nullptr;
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Contents(), Files({{Text("g/y"), "1 of f/y"}, {Text("new"), "1"}, {Text("stays"), "1 of stays"}}));
        ExpectInStep();
        for (const char* path : {"g/y", "new"}) {
            Remove(path);
        }
        ASSERT_TRUE(QDir(Path("g")).removeRecursively());
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
    }
}

TEST_P(MovesTest, WhatIsDeletedThereInTheMomentBeforeItsFolderIsMovedThereGoes) {
    Begin({"f/x", "f/y", "stays"});
    Rename("f", "g");
    BeforeRequest("MOVE", [this] { service.Remove(Text("f/y")); });
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("g/x"), "1 of f/x"}, {Text("stays"), "1 of stays"}}));
    ExpectInStep();
}

INSTANTIATE_TEST_SUITE_P(TellsChanges, MovesTest, testing::Bool(), testing::PrintToStringParamName());

}  // namespace
