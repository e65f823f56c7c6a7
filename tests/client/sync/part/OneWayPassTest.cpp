#include <gtest/gtest.h>

#include <QDir>

#include "client/wire/TransactionError.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::report::SyncOutcome;
using ovsync::wire::TransactionError;
using tests::Text;
using Files = std::map<QString, QByteArray>;

/// Pulls and pushes of what changed, with a service that tells it.
class OneWayPassTest : public tests::SyncTest {
protected:
    OneWayPassTest() { service.tellsChanges = true; }

    /// Both sides have these files, and passes of both directions know it.
    void BeginOneWay(const std::vector<const char*>& paths) {
        for (const char* path : paths) {
            Write(path, QByteArray("1 of ") + path);
        }
        for (int pass = 0; pass < 2; ++pass) {
            ASSERT_EQ(Push(), SyncOutcome::InStep);
            ASSERT_EQ(Pull(), SyncOutcome::InStep);
        }
        service.ForgetCounts();
    }

    bool HasListed() const { return service.Count("LIST") > 0; }
};

TEST_F(OneWayPassTest, NothingChangedIsOneQuestion) {
    BeginOneWay({"a", "f/b"});
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.CountAll(), 1);
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.CountAll(), 2);
    EXPECT_EQ(service.Count("REPORT"), 2);
}

TEST_F(OneWayPassTest, APullFetchesWhatChangedWithoutAListing) {
    BeginOneWay({"a", "f/b", "gone", "g/gone"});
    service.Put(Text("f/b"), "theirs");
    service.Put(Text("new/c"), "new");
    service.Remove(Text("gone"));
    service.Remove(Text("g"));
    options.deletes = true;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(Contents(), Files({{Text("a"), "1 of a"}, {Text("f/b"), "theirs"}, {Text("new/c"), "new"}}));
    EXPECT_FALSE(QDir(Path("g")).exists());
}

TEST_F(OneWayPassTest, APullBringsBackWhatWasDeletedHereThoughNothingChangedThere) {
    BeginOneWay({"a", "f/b"});
    Remove("f/b");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(Content("f/b"), QByteArray("1 of f/b"));
}

TEST_F(OneWayPassTest, APullAsksForChangesAlthoughThereIsMoreHere) {
    BeginOneWay({"a"});
    Write("mine", "1");
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(Contents(), Files({{Text("a"), "theirs"}, {Text("mine"), "1"}}));
}

TEST_F(OneWayPassTest, WhatCouldNotBeFetchedIsFetchedByTheNextPullThoughNobodyTellsOfItAgain) {
    BeginOneWay({"a", "b"});
    service.Put(Text("a"), "theirs");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("GET")) {
            throw TransactionError("GET", QUrl(), Text("reset"), {});
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::Failed);
    service.onRequest = nullptr;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(Content("a"), QByteArray("theirs"));
}

TEST_F(OneWayPassTest, WhatIsKeptAfterItsDeletionThereIsToldByEveryPull) {
    BeginOneWay({"a", "b"});
    service.Remove(Text("a"));
    for (int pull = 0; pull < 3; ++pull) {
        EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList(Text("Kept a")));
    }
    options.deletes = true;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("b"), "1 of b"}}));
}

TEST_F(OneWayPassTest, APushSendsWhatChangedWithoutAListing) {
    BeginOneWay({"a", "f/b", "gone"});
    Write("f/b", "mine");
    Write("new/c", "new");
    Remove("gone");
    options.deletes = true;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(service.Contents(), Contents());
}

TEST_F(OneWayPassTest, WhatIsNewerThereIsToldByEveryPushAndNeverOverwritten) {
    BeginOneWay({"a", "b"});
    service.Put(Text("a"), "theirs");
    for (int push = 0; push < 3; ++push) {
        Push();
        EXPECT_EQ(Told(), QStringList(Text("NewerThere a")));
    }
    EXPECT_FALSE(HasListed());
    Write("a", "mine");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
}

TEST_F(OneWayPassTest, WhatChangedThereAndWasDeletedHereIsToldByEveryPushAndNeverDeleted) {
    options.deletes = true;
    BeginOneWay({"a", "b"});
    service.Put(Text("a"), "theirs");
    Remove("a");
    for (int push = 0; push < 4; ++push) {
        EXPECT_EQ(Push(), SyncOutcome::InStep);
        EXPECT_EQ(Told(), QStringList(Text("DeletedHere a")));
    }
    EXPECT_EQ(service.Content(Text("a")), QByteArray("theirs"));
}

TEST_F(OneWayPassTest, WhatOnlyTheServiceHasIsNeverOverwrittenByAPush) {
    BeginOneWay({"a"});
    service.Put(Text("x"), "theirs");
    for (int push = 0; push < 3; ++push) {
        EXPECT_EQ(Push(), SyncOutcome::InStep);
    }
    Write("x", "mine");
    EXPECT_EQ(Push(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Conflict x")));
    EXPECT_EQ(service.Content(Text("x")), QByteArray("theirs"));
}

TEST_F(OneWayPassTest, NoPassHidesAChangeFromOneOfAnotherDirection) {
    BeginOneWay({"a", "b"});
    ASSERT_EQ(Sync(), SyncOutcome::InStep);
    service.Put(Text("a"), "theirs");
    Push();
    EXPECT_EQ(Content("a"), QByteArray("1 of a"));
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("theirs"));
    Write("b", "mine");
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("b")), QByteArray("1 of b"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("b")), QByteArray("mine"));
    service.Put(Text("c"), "theirs");
    Push();
    Pull();
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
}

}  // namespace
