#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>

#include "client/sync/both/TwoWayPass.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::changes::ServiceChanges;
using ovsync::local::Exclusion;
using ovsync::report::SyncOutcome;
using ovsync::store::RecordDatabase;
using ovsync::wire::TransactionError;
using tests::Text;
using Files = std::map<QString, QByteArray>;

/// Passes that look only at what changed. The parameter says whether the service tells whole folders.
class PartialPassTest : public tests::SyncTest, public testing::WithParamInterface<bool> {
protected:
    PartialPassTest() {
        service.tellsChanges = true;
        service.tellsWhole = GetParam();
    }

    /// Both sides are in step with these files, and the service told of all that the passes did.
    void Begin(const std::vector<const char*>& paths) {
        for (const char* path : paths) {
            Write(path, QByteArray("1 of ") + path);
        }
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
        service.ForgetCounts();
    }

    bool HasListed() const { return service.Count("LIST") > 0; }

    /// Another pass has nothing to do, and asks for no more than what changed.
    void ExpectInStep() {
        EXPECT_EQ(Contents(), service.Contents());
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        service.ForgetCounts();
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_TRUE(Told().isEmpty()) << Told().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(service.CountAll(), 1);
        EXPECT_EQ(service.Count("REPORT"), 1);
    }

    QString Setting(const char* name) {
        return RecordDatabase(folder.path(), RecordDatabase::Access::Change).Setting(Text(name));
    }
};

TEST_P(PartialPassTest, AChangedFileIsSentWithoutAListing) {
    Begin({"a", "f/b"});
    Write("f/b", "mine");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(service.Content(Text("f/b")), QByteArray("mine"));
    ExpectInStep();
}

TEST_P(PartialPassTest, WhatIsGoneBeforeItIsReadIsSeenToByTheNextPassWithoutAListing) {
    Begin({"a", "f/b"});
    Write("f/b", "mine");
    Write("new", "mine, too");
    tree.before = [this](const char* operation, const QString& path) {
        if (operation == std::string("Open") && path != Text("a")) {
            QFile::remove(folder.filePath(path));
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_TRUE(Told().isEmpty()) << Told().join(QLatin1Char('\n')).toStdString();
    tree.before = nullptr;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "1 of a"}}));
    ExpectInStep();
}

TEST_P(PartialPassTest, AFileThatChangedThereSinceIsNotOverwritten) {
    Begin({"a", "f/b"});
    Write("f/b", "mine");
    service.onRequest = [this](const QString& method, const QString&) {
        if (method == Text("HEAD")) {
            service.onRequest = nullptr;
            service.Put(Text("f/b"), "theirs");
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("f/b")), QByteArray("theirs"));
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Content(Text("f/b")), QByteArray("theirs"));
    EXPECT_EQ(Content("f/b"), QByteArray("mine"));
}

TEST_P(PartialPassTest, WhatChangedThereIsFetchedWithoutAListing) {
    Begin({"a", "f/b", "gone", "g/h/gone"});
    service.Put(Text("f/b"), "theirs");
    service.Put(Text("new/c"), "new");
    service.Remove(Text("gone"));
    service.Remove(Text("g"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(Contents(), Files({{Text("a"), "1 of a"}, {Text("f/b"), "theirs"}, {Text("new/c"), "new"}}));
    EXPECT_FALSE(QDir(Path("g")).exists());
    ExpectInStep();
}

TEST_P(PartialPassTest, ADeletionIsBelievedOnlyOfTheFileItself) {
    Begin({"a", "f/b"});
    service.onChanges = [](ServiceChanges& changes) { changes.gone.append({Text("S/a"), Text("S/f")}); };
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("1 of a"));
    EXPECT_EQ(Content("f/b"), QByteArray("1 of f/b"));
    service.onChanges = nullptr;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    ExpectInStep();
}

TEST_P(PartialPassTest, WhatIsDeletedThereAndMadeAgainIsFetched) {
    Begin({"a", "f/b"});
    service.Remove(Text("f/b"));
    service.Put(Text("f/b"), "again");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/b"), QByteArray("again"));
    service.Remove(Text("f"));
    service.Put(Text("f/c"), "another folder");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), Files({{Text("a"), "1 of a"}, {Text("f/c"), "another folder"}}));
    ExpectInStep();
}

TEST_P(PartialPassTest, WhatChangesThereWhileThePassRunsIsFetchedByTheNext) {
    for (const char* moment : {"REPORT", "TOKEN", "LIST", "PUT", "SENT"}) {
        SCOPED_TRACE(moment);
        Write("mine", moment);
        service.onRequest = [&](const QString& method, const QString&) {
            if (method == Text(moment)) {
                service.onRequest = nullptr;
                service.Put(Text("theirs"), moment);
            }
        };
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        service.onRequest = nullptr;
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Contents(), service.Contents());
        // So that the next moment has all kinds of requests.
        service.onChanges = [](ServiceChanges& changes) { changes.answer = ServiceChanges::Answer::Forgotten; };
        ASSERT_EQ(Sync(), SyncOutcome::InStep);
        service.onChanges = nullptr;
    }
}

TEST_P(PartialPassTest, AnOpenConflictIsLookedAtByEachPass) {
    Begin({"a", "b"});
    Write("a", "mine");
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    for (int pass = 0; pass < 3; ++pass) {
        service.ForgetCounts();
        EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList(Text("Conflict a")));
        EXPECT_FALSE(HasListed());
    }
    EXPECT_EQ(service.CountAll(), 2);
    for (const QString& copy : QDir(folder.path()).entryList({Text("a (from*")})) {
        ASSERT_TRUE(QFile::remove(folder.filePath(copy)));
    }
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("a")), QByteArray("mine"));
    ExpectInStep();
}

TEST_P(PartialPassTest, AFileThatCouldNotBeFetchedIsFetchedByTheNextPass) {
    Begin({"a"});
    service.Put(Text("b"), "theirs");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("GET")) {
            throw TransactionError("GET", QUrl(), Text("cut off"), {});
        }
    };
    EXPECT_EQ(Sync(), SyncOutcome::Failed);
    service.onRequest = nullptr;
    service.ForgetCounts();
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    ExpectInStep();
}

TEST_P(PartialPassTest, AFileThatCouldNotBeSentIsSentByTheNextPass) {
    Begin({"a"});
    Write("a", "2");
    Write("new", "1");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("PUT")) {
            throw ::sync::http::HttpException(Text("full"), 507, QUrl());
        }
    };
    EXPECT_EQ(SyncPlaces({Text("a"), Text("new")}), SyncOutcome::LeftSome);
    service.onRequest = nullptr;
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    ExpectInStep();
}

TEST_P(PartialPassTest, APassThatBreaksOffLosesNoChange) {
    for (const char* moment : {"GET", "PUT", "SENT", "DELETE", "DELETED", "MOVE", "MOVED"}) {
        SCOPED_TRACE(moment);
        Begin({"a", "b", "c", "f/d", "f/e", "g/h"});
        Write("a", QByteArray("mine ") + moment);
        service.Put(Text("b"), QByteArray("theirs ") + moment);
        Remove("c");
        ASSERT_TRUE(QDir().rename(Path("f"), Path("moved here")));
        service.Move(Text("g"), Text("moved there"));
        service.onRequest = [moment](const QString& method, const QString&) {
            if (method == Text(moment)) {
                throw ::sync::http::HttpException(Text("who are you?"), 401, QUrl());
            }
        };
        try {
            EXPECT_NE(Sync(), SyncOutcome::InStep);
        } catch (const ::sync::http::HttpException&) {
            // That is how most end.
        }
        service.onRequest = nullptr;
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_EQ(Content("moved there/h"), QByteArray("1 of g/h"));
        EXPECT_EQ(service.Content(Text("moved here/d")), QByteArray("1 of f/d"));
        ExpectInStep();
        ASSERT_TRUE(QDir(Path("moved here")).removeRecursively());
        ASSERT_TRUE(QDir(Path("moved there")).removeRecursively());
    }
}

TEST_P(PartialPassTest, AFileThatMovedWithItsFolderAndOneThatWasDeletedInItAreKnownAgain) {
    Begin({"f/a", "f/g/b", "f/gone", "stays"});
    service.Move(Text("f"), Text("m"));
    service.Remove(Text("m/gone"));
    service.Put(Text("m/g/b"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(service.Count("GET"), 1);
    EXPECT_EQ(Contents(), Files({{Text("m/a"), "1 of f/a"}, {Text("m/g/b"), "theirs"}, {Text("stays"), "1 of stays"}}));
    ExpectInStep();
}

TEST_P(PartialPassTest, AFolderThereWhereAFileIsHereIsFetchedOnceThatIsGone) {
    Begin({"a", "b"});
    Write("a", "mine");
    service.Remove(Text("a"));
    service.Put(Text("a/inside"), "1");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    service.Put(Text("a/more"), "2");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    Remove("a");
    service.Put(Text("a/most"), "3");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a/inside"), QByteArray("1"));
    ExpectInStep();
}

TEST_P(PartialPassTest, WhatIsRefusedForItsNameIsToldByEachPass) {
    Begin({"a"});
    service.Put(Text("x.{SyncTemp}"), "1");
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList(Text("Refused x.{SyncTemp}")));
    }
    service.Remove(Text("x.{SyncTemp}"));
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    Write("y.{SyncTemp}", "1");
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_EQ(pass == 0 ? SyncPlaces({Text("y.{SyncTemp}")}) : SyncPlaces({}), SyncOutcome::LeftSome);
        EXPECT_EQ(Told(), QStringList(Text("Refused y.{SyncTemp}")));
    }
}

TEST_P(PartialPassTest, AFolderThatNobodyLooksIntoHidesNoChangeForGood) {
    Begin({"a", "f/b"});
    ASSERT_EQ(mkdir(Path("f/.ovsync").toUtf8().constData(), 0777), 0);
    service.Put(Text("f/b"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("f/b"), QByteArray("1 of f/b"));
    service.Remove(Text("a"));
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::LeftSome);
    EXPECT_EQ(Content("a"), QByteArray("(none)"));
    ASSERT_EQ(rmdir(Path("f/.ovsync").toUtf8().constData()), 0);
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/b"), QByteArray("theirs"));
    ExpectInStep();
}

TEST_P(PartialPassTest, ALinkHidesNoChangeForGood) {
    Begin({"a", "b"});
    Remove("a");
    ASSERT_EQ(symlink("b", Path("a").toUtf8().constData()), 0);
    service.Put(Text("a"), "theirs");
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::LeftSome);
    Remove("a");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(Content("a"), QByteArray("theirs"));
    ExpectInStep();
}

TEST_P(PartialPassTest, AnotherFilterLooksAtEverything) {
    options.exclusion = Exclusion(QStringList(Text("*.tmp")));
    Begin({"a"});
    service.Put(Text("x.tmp"), "theirs");
    Write("y.tmp", "mine");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    options.exclusion = Exclusion();
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_TRUE(HasListed());
    ExpectInStep();
}

TEST_P(PartialPassTest, AServiceThatForgotOrNeverKnewTheStateIsListed) {
    Begin({"a", "b"});
    for (const bool isAnswerKnown : {false, true}) {
        service.Put(Text("a"), isAnswerKnown ? "1" : "2");
        service.ForgetCounts();
        service.onChanges = [isAnswerKnown](ServiceChanges& changes) {
            const QString state = changes.state;
            changes = ServiceChanges();
            changes.answer = isAnswerKnown ? ServiceChanges::Answer::NotAble : ServiceChanges::Answer::Forgotten;
        };
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_TRUE(HasListed());
        EXPECT_EQ(service.Count("TOKEN"), isAnswerKnown ? 0 : 1);
        EXPECT_EQ(Contents(), service.Contents());
    }
    // It is not asked again for a day.
    service.onChanges = nullptr;
    service.ForgetCounts();
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("TOKEN") + service.Count("REPORT"), 0);
}

TEST_P(PartialPassTest, ADayLaterEverythingIsListed) {
    Begin({"a"});
    for (const int seconds : {-24 * 60 * 60, 60 * 60}) {
        const QString then = QDateTime::currentDateTimeUtc().addSecs(seconds).toString(Qt::ISODate);
        {
            RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
            QString state = records.Setting(Text("state of both sides"));
            const int at = state.indexOf(Text("\"listed\":\"")) + 10;
            ASSERT_GT(at, 10);
            records.WriteSetting(Text("state of both sides"), state.replace(at, then.size(), then));
        }
        service.ForgetCounts();
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_TRUE(HasListed()) << seconds;
        ExpectInStep();
    }
}

TEST_P(PartialPassTest, AnswersThatCannotBePlacedAreNotBelieved) {
    using Change = std::function<void(ServiceChanges&)>;
    ::sync::config::FileConfiguration elsewhere;
    elsewhere.serverPath = Text("T/a");
    elsewhere.name = Text("a");
    ::sync::config::FileConfiguration orphan;
    orphan.serverPath = Text("S/unknown/a");
    orphan.name = Text("a");
    ::sync::config::FolderConfiguration other;
    other.serverPath = Text("S/f");
    other.name = Text("f");
    other.setServerFolderId(Text("another one"));
    for (const Change& change : {Change([&](ServiceChanges& changes) { changes.files.append(elsewhere); }),
                                 Change([&](ServiceChanges& changes) { changes.files.append(orphan); }),
                                 Change([&](ServiceChanges& changes) { changes.folders.append(other); }),
                                 Change([&](ServiceChanges& changes) { changes.gone.append(Text("T/b")); }),
                                 Change([&](ServiceChanges& changes) { changes.whole.append(Text("T")); }),
                                 Change([&](ServiceChanges& changes) { changes.gone.append(Text("S")); })}) {
        service.onChanges = nullptr;
        Begin({"a", "f/b"});
        service.onChanges = change;
        EXPECT_EQ(Sync(), SyncOutcome::InStep);
        EXPECT_TRUE(HasListed());
        EXPECT_EQ(Contents(), Files({{Text("a"), "1 of a"}, {Text("f/b"), "1 of f/b"}}));
    }
}

TEST_P(PartialPassTest, TheLimitOfDeletionsCountsAllFiles) {
    for (char name = 'a'; name <= 'x'; ++name) {
        Write(std::string(1, name).c_str(), "1");
    }
    Begin({"stays"});
    options.deletionLimit = ovsync::pass::DeletionLimit();
    for (const char* path : {"a", "b", "c"}) {
        Remove(path);
    }
    for (const char* path : {"d", "e", "f"}) {
        service.Remove(Text(path));
    }
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    ExpectInStep();
    for (char name = 'g'; name <= 'p'; ++name) {
        Remove(std::string(1, name).c_str());
    }
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Kept .")));
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents().size(), 19U);
}

TEST_P(PartialPassTest, APassOverPlacesLooksNowhereElse) {
    Begin({"a", "f/b", "f/c", "g/d"});
    Write("a", "not told");
    Write("f/b", "told");
    EXPECT_EQ(SyncPlaces({Text("f/b")}), SyncOutcome::InStep);
    EXPECT_EQ(service.Content(Text("f/b")), QByteArray("told"));
    EXPECT_EQ(service.Content(Text("a")), QByteArray("1 of a"));
    EXPECT_EQ(SyncPlaces({Text("a")}), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
    service.ForgetCounts();
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_EQ(service.CountAll(), 1);
}

TEST_P(PartialPassTest, APassOverPlacesTakesFoldersWithAllThatIsInThem) {
    Begin({"a", "f/b", "f/g/c"});
    ASSERT_TRUE(QDir().rename(Path("f"), Path("m")));
    EXPECT_EQ(SyncPlaces({Text("f"), Text("m")}), SyncOutcome::InStep);
    EXPECT_EQ(service.Count("MOVE"), 1);
    EXPECT_EQ(service.Count("PUT"), 0);
    EXPECT_EQ(Contents(), service.Contents());
    Write("new/x/y", "1");
    EXPECT_EQ(SyncPlaces({Text("new")}), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
    ASSERT_TRUE(QDir(Path("m")).removeRecursively());
    EXPECT_EQ(SyncPlaces({Text("m")}), SyncOutcome::InStep);
    EXPECT_EQ(service.Contents(), Files({{Text("a"), "1 of a"}, {Text("new/x/y"), "1"}}));
    EXPECT_FALSE(service.HasFolder(Text("m")));
    ExpectInStep();
}

TEST_P(PartialPassTest, AFolderThatIsDeletedThereIsNotMadeAgainForWhatIsExcluded) {
    options.exclusion = Exclusion(QStringList(Text("*.tmp")));
    Begin({"a", "f/b"});
    Write("f/x.tmp", "excluded");
    service.Remove(Text("f"));
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/x.tmp"), QByteArray("excluded"));
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_FALSE(service.HasFolder(Text("f")));
}

TEST_P(PartialPassTest, AFolderWhoseDeletionHadToWaitIsDeletedByTheNextPass) {
    disk.MakeFolder(Text("empty"));
    Begin({"a"});
    ASSERT_TRUE(disk.RemoveFolder(Text("empty")));
    Write("a", "2");
    service.onRequest = [](const QString& method, const QString&) {
        if (method == Text("PUT")) {
            throw ::sync::http::HttpException(Text("full"), 507, QUrl());
        }
    };
    EXPECT_EQ(SyncPlaces({Text("a"), Text("empty")}), SyncOutcome::LeftSome);
    EXPECT_TRUE(service.HasFolder(Text("empty")));
    service.onRequest = nullptr;
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_FALSE(service.HasFolder(Text("empty")));
}

TEST_P(PartialPassTest, ANameThatIsNotUtf8IsToldByEachPass) {
    Begin({"a"});
    QFile file(Path("b"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(rename(Path("b").toUtf8().constData(), Path("").toUtf8().append("/\xE9").constData()), 0);
    EXPECT_EQ(Sync(), SyncOutcome::LeftSome);
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::LeftSome);
}

TEST_P(PartialPassTest, APassOverPlacesDeletesNothingInAFolderThatIsAway) {
    Begin({"a", "b"});
    options.deletionLimit = ovsync::pass::DeletionLimit();
    Remove("a");
    Remove("b");
    EXPECT_EQ(SyncPlaces({Text("a"), Text("b")}), SyncOutcome::LeftSome);
    EXPECT_EQ(service.Contents().size(), 2U);
}

TEST_P(PartialPassTest, WhatTheServiceChangesIsBroughtToTheRightPlaceInAPassOverPlaces) {
    Begin({"a", "f/b"});
    service.Put(Text("f/b"), "theirs");
    service.Put(Text("f/new/c"), "new");
    service.Remove(Text("a"));
    EXPECT_EQ(SyncPlaces({}), SyncOutcome::InStep);
    EXPECT_EQ(Contents(), service.Contents());
    ExpectInStep();
}

TEST_P(PartialPassTest, ADryRunChangesNothingOfTheState) {
    Begin({"a"});
    const QString before = Setting("state of both sides");
    service.Put(Text("b"), "1");
    options.isDryRun = true;
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_EQ(events.size(), 1);
    options.isDryRun = false;
    EXPECT_EQ(Setting("state of both sides"), before);
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    ExpectInStep();
}

TEST_P(PartialPassTest, AFolderThatNobodyKnowsHasToBeToldWhole) {
    service.tellsWhole = true;
    Begin({"a"});
    service.Put(Text("new/b"), "1");
    service.onChanges = [](ServiceChanges& changes) {
        changes.whole.removeAll(Text("S/new"));
        changes.files.clear();
    };
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_TRUE(HasListed());
    EXPECT_EQ(Contents(), service.Contents());
}

TEST_P(PartialPassTest, WhatIsExcludedAfterItWasInStepKeepsNoPassFromLookingOnlyAtChanges) {
    Begin({"a", "a.tmp", "x/b"});
    options.exclusion = Exclusion({Text("*.tmp"), Text("x/")});
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    service.ForgetCounts();
    Write("a", "2");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    options.exclusion = Exclusion();
    service.Put(Text("x/b"), "2");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    ExpectInStep();
}

TEST_P(PartialPassTest, AnExcludedFolderNeedNotBeKnown) {
    options.exclusion = Exclusion(QStringList(Text("x/")));
    service.Put(Text("x/y"), "1");
    Begin({"a"});
    service.Put(Text("a"), "2");
    EXPECT_EQ(Sync(), SyncOutcome::InStep);
    EXPECT_FALSE(HasListed());
    EXPECT_EQ(Contents(), Files({{Text("a"), "2"}}));
}

INSTANTIATE_TEST_SUITE_P(Tells, PartialPassTest, testing::Bool(), [](const auto& suite) {
    return suite.param ? std::string("WholeFolders") : std::string("Changes");
});

}  // namespace
