#include "client/sync/local/Trash.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "client/sync/local/LocalError.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalError;
using ovsync::local::Trash;
using ovsync::local::TrashEntry;
using ovsync::local::TrashTime;
using ovsync::report::SyncEvent;
using ovsync::report::SyncOutcome;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::Text;

const char* const Noon = "2026-11-20 12.00.00";

QDateTime AtNoon() {
    return QDateTime(QDate(2026, 11, 20), QTime(12, 0), Qt::UTC);
}

TrashTime PassOf(const char* folder) {
    return TrashTime::FromFolderName(Text(folder)).value();
}

class TrashTest : public tests::SyncTest {
protected:
    TrashTest() { QDir(folder.path()).mkdir(Text(".ovsync")); }

    Trash TrashAt(const QDateTime& now, int days = Trash::DefaultDays) { return {tree, now, days}; }
    Trash TrashAtNoon() { return TrashAt(AtNoon()); }

    /// A pass that began at `now` takes a new file in.
    void Take(const QDateTime& now, const char* path, const QByteArray& content) {
        Write("taken", content);
        TrashAt(now).Take(Text("taken"), Text(path));
        ASSERT_FALSE(QFileInfo::exists(Path("taken")));
    }

    /// As "folder of the pass: path, size".
    QStringList Listed() {
        QStringList lines;
        for (const TrashEntry& entry : TrashAtNoon().Entries()) {
            lines.append(QStringLiteral("%1: %2, %3").arg(entry.from.FolderName(), entry.path).arg(entry.size));
        }
        return lines;
    }

    QByteArray InTrash(const char* passAndPath) const {
        return Content((QByteArray(".ovsync/trash/") + passAndPath).constData());
    }

    bool HasInTrash(const char* passAndPath) const {
        const QFileInfo info(Path(".ovsync/trash/") + Text(passAndPath));
        return info.exists() || info.isSymLink();
    }

    /// Restores the newest of `path` to `to`, and returns what is in the way.
    QString Restore(const char* path, const char* to) {
        Trash trash = TrashAtNoon();
        return trash.Restore(trash.Find(Text(path), std::nullopt).value(), Text(to));
    }
};

TEST_F(TrashTest, AFolderIsThatOfAPassOnlyByTheNameThatAPassGivesIt) {
    for (const char* name : {Noon, "2026-11-20 12.00.00 2", "2026-11-20 12.00.00 10", "2024-02-29 00.00.00"}) {
        const std::optional<TrashTime> time = TrashTime::FromFolderName(Text(name));
        ASSERT_TRUE(time) << name;
        EXPECT_EQ(time->FolderName(), Text(name));
    }
    for (const char* name : {"",
                             "mine",
                             "2026-11-20",
                             "2026-11-20 12.00",
                             "2026-11-20 12.00.00 ",
                             "2026-11-20 12.00.00 0",
                             "2026-11-20 12.00.00 1",
                             "2026-11-20 12.00.00 02",
                             "2026-11-20 12.00.00 -2",
                             "2026-11-20 12.00.00  2",
                             "2026-11-20 12.00.00 9999999999",
                             "2026-11-20 12.00.00 (copy)",
                             "2026-11-20 24.00.00",
                             "2026-02-29 12.00.00",
                             "2026-13-01 12.00.00",
                             " 2026-11-20 12.00.00",
                             "2026-11-20 12.00.00\n",
                             "2026-11-20 12:00:00",
                             "+026-11-20 12.00.00",
                             "2026-11-20 \xD9\xA1\xD9\xA2.00.00"}) {
        EXPECT_FALSE(TrashTime::FromFolderName(Text(name))) << name;
    }
}

TEST_F(TrashTest, ATimeOfAPassIsInUtcWhateverTheZoneSkipsThen) {
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Europe/Berlin");
    tzset();
    EXPECT_EQ(PassOf("2026-03-29 02.30.00").time, QDateTime(QDate(2026, 3, 29), QTime(2, 30), Qt::UTC));
    zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
    tzset();
}

TEST_F(TrashTest, PassesAreInOrderOfTimeAndThenOfNumber) {
    EXPECT_LT(PassOf("2026-11-20 12.00.00 10"), PassOf("2026-11-20 12.00.01"));
    EXPECT_LT(PassOf("2026-11-20 12.00.00 9"), PassOf("2026-11-20 12.00.00 10"));
    EXPECT_LT(PassOf(Noon), PassOf("2026-11-20 12.00.00 2"));
    EXPECT_FALSE(PassOf(Noon) < PassOf(Noon));
}

TEST_F(TrashTest, WithoutATrashThereIsNothing) {
    EXPECT_THAT(Listed(), IsEmpty());
    EXPECT_FALSE(TrashAtNoon().Find(Text("a"), std::nullopt));
    EXPECT_THAT(TrashAtNoon().RemoveOld(), IsEmpty());
    EXPECT_THAT(TrashAtNoon().RemoveAll(), IsEmpty());
    EXPECT_FALSE(QFileInfo::exists(Path(".ovsync/trash")));
}

TEST_F(TrashTest, EntriesComeInOrderOfTimeAndPath) {
    Take(AtNoon().addSecs(1), "a", "333");
    Take(AtNoon(), "z", "1");
    Take(AtNoon(), "f/g/\xC3\xBC x.txt", "22");
    Take(AtNoon(), "b", "");
    EXPECT_THAT(Listed(),
                ElementsAre(Text("2026-11-20 12.00.00: b, 0"), Text("2026-11-20 12.00.00: f/g/\xC3\xBC x.txt, 2"),
                            Text("2026-11-20 12.00.00: z, 1"), Text("2026-11-20 12.00.01: a, 3")));
}

TEST_F(TrashTest, TwoPassesWithinOneSecondKeepBothFiles) {
    Take(AtNoon(), "a", "1");
    Take(AtNoon().addMSecs(400), "a", "22");
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: a, 1"), Text("2026-11-20 12.00.00 2: a, 2")));
    EXPECT_EQ(TrashAtNoon().Find(Text("a"), std::nullopt)->size, 2);
    EXPECT_EQ(TrashAtNoon().Find(Text("a"), PassOf(Noon))->size, 1);
    EXPECT_EQ(TrashAtNoon().Find(Text("a"), PassOf("2026-11-20 12.00.00 2"))->size, 2);
    EXPECT_FALSE(TrashAtNoon().Find(Text("a"), PassOf("2026-11-20 12.00.00 3")));
}

TEST_F(TrashTest, APathThatWasAFileAndThenAFolderIsKeptAsBoth) {
    Take(AtNoon(), "x", "file");
    Take(AtNoon(), "x/y", "in a folder");
    Take(AtNoon(), "x", "file again");
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: x, 4"), Text("2026-11-20 12.00.00 2: x/y, 11"),
                                      Text("2026-11-20 12.00.00 3: x, 10")));
    EXPECT_EQ(Restore("x/y", "x/y"), QString());
    EXPECT_EQ(Content("x/y"), QByteArray("in a folder"));
    EXPECT_EQ(Restore("x", "x"), Text("x"));
    EXPECT_EQ(Restore("x", "x2"), QString());
    EXPECT_EQ(Content("x2"), QByteArray("file again"));
}

TEST_F(TrashTest, AFileInPlaceOfTheTrashIsAnErrorAndLosesNothing) {
    Write(".ovsync/trash", "mine");
    Write("a", "1");
    EXPECT_THROW(TrashAtNoon().Take(Text("a"), Text("a")), LocalError);
    EXPECT_EQ(Content("a"), QByteArray("1"));
    EXPECT_THROW(TrashAtNoon().Entries(), LocalError);
    const QVector<SyncEvent> failures = TrashAtNoon().RemoveOld();
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures[0].path, Text(".ovsync/trash"));
}

TEST_F(TrashTest, AFileComesBackByRenameAndTheTrashKeepsNoEmptyFolders) {
    Take(AtNoon(), "f/g/a", "1");
    Take(AtNoon(), "f/b", "2");
    struct stat before {};
    ASSERT_EQ(stat(Path(".ovsync/trash/2026-11-20 12.00.00/f/g/a").toUtf8().constData(), &before), 0);
    EXPECT_EQ(Restore("f/g/a", "f/g/a"), QString());
    struct stat after {};
    ASSERT_EQ(stat(Path("f/g/a").toUtf8().constData(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(Content("f/g/a"), QByteArray("1"));
    EXPECT_FALSE(HasInTrash("2026-11-20 12.00.00/f/g"));
    EXPECT_EQ(InTrash("2026-11-20 12.00.00/f/b"), QByteArray("2"));
    EXPECT_EQ(Restore("f/b", "b"), QString());
    EXPECT_FALSE(HasInTrash(Noon));
}

TEST_F(TrashTest, WhatIsThereIsNeverOverwritten) {
    Take(AtNoon(), "a", "1");
    Write("a", "mine");
    EXPECT_EQ(Restore("a", "a"), Text("a"));
    ASSERT_TRUE(QDir(folder.path()).mkdir(Text("f")));
    EXPECT_EQ(Restore("a", "f"), Text("f"));
    EXPECT_EQ(Restore("a", "a/b/c"), Text("a"));
    ASSERT_TRUE(QFile::link(Text("nowhere"), Path("link")));
    EXPECT_EQ(Restore("a", "link"), Text("link"));
    ASSERT_TRUE(QFile::link(Path("f"), Path("to f")));
    EXPECT_EQ(Restore("a", "to f/b"), Text("to f"));
    EXPECT_EQ(Content("a"), QByteArray("mine"));
    EXPECT_THAT(QDir(Path("f")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), IsEmpty());
    EXPECT_EQ(InTrash("2026-11-20 12.00.00/a"), QByteArray("1"));
}

TEST_F(TrashTest, WhatComesInTheLastMomentIsNotOverwrittenEither) {
    Take(AtNoon(), "a", "1");
    tree.before = [this](const char* operation, const QString& path) {
        if (QByteArray(operation) == "Move" && path == Text("a")) {
            Write("a", "quick");
        }
    };
    EXPECT_EQ(Restore("a", "a"), Text("a"));
    EXPECT_EQ(Content("a"), QByteArray("quick"));
    EXPECT_EQ(InTrash("2026-11-20 12.00.00/a"), QByteArray("1"));
}

TEST_F(TrashTest, AFileIsBackEvenIfTheFolderThatItLeftCannotBeTidied) {
    Take(AtNoon(), "f/a", "1");
    tree.before = [](const char* operation, const QString& path) {
        if (QByteArray(operation) == "RemoveFolder") {
            throw LocalError(path, EIO);
        }
    };
    EXPECT_EQ(Restore("f/a", "f/a"), QString());
    EXPECT_EQ(Content("f/a"), QByteArray("1"));
}

TEST_F(TrashTest, WhatIsNoPathBelowTheFolderIsNotFound) {
    Take(AtNoon(), "f/a", "1");
    Write(".ovsync/trash/b", "beside the passes");
    for (const char* path : {"", ".", "..", "/", "f", "f/", "/f/a", "f//a", "f/./a", "../b", "f/../../b", "f/a/", "F/A",
                             "2026-11-20 12.00.00/f/a"}) {
        EXPECT_FALSE(TrashAtNoon().Find(Text(path), std::nullopt)) << path;
    }
    EXPECT_FALSE(TrashAtNoon().Find(QStringLiteral("f/a") + QChar(0), std::nullopt));
    EXPECT_FALSE(TrashAtNoon().Find(QString(100000, QLatin1Char('x')), std::nullopt));
    EXPECT_TRUE(TrashAtNoon().Find(Text("f/a"), std::nullopt));
}

TEST_F(TrashTest, WhatNoPassPutThereIsNotListedAndStays) {
    Take(AtNoon(), "a", "1");
    Write(".ovsync/trash/mine/b", "2");
    Write(".ovsync/trash/2026-01-01 12.00.00", "a file");
    Write("outside/c", "3");
    ASSERT_TRUE(QFile::link(Path("outside"), Path(".ovsync/trash/2026-01-02 12.00.00")));
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: a, 1")));
    EXPECT_THAT(TrashAtNoon().RemoveAll(), IsEmpty());
    EXPECT_THAT(Listed(), IsEmpty());
    EXPECT_EQ(InTrash("mine/b"), QByteArray("2"));
    EXPECT_EQ(InTrash("2026-01-01 12.00.00"), QByteArray("a file"));
    EXPECT_TRUE(HasInTrash("2026-01-02 12.00.00"));
    EXPECT_EQ(Content("outside/c"), QByteArray("3"));
}

TEST_F(TrashTest, ALinkInTheTrashIsNeverFollowed) {
    Write("outside/c", "3");
    Take(AtNoon(), "a", "1");
    ASSERT_TRUE(QFile::link(Path("outside"), Path(".ovsync/trash/2026-11-20 12.00.00/folder")));
    ASSERT_TRUE(QFile::link(Path("outside/c"), Path(".ovsync/trash/2026-11-20 12.00.00/file")));
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: a, 1")));
    EXPECT_FALSE(TrashAtNoon().Find(Text("file"), std::nullopt));
    EXPECT_FALSE(TrashAtNoon().Find(Text("folder/c"), std::nullopt));
    Take(AtNoon(), "folder/b", "2");
    EXPECT_EQ(InTrash("2026-11-20 12.00.00 2/folder/b"), QByteArray("2"));
    EXPECT_THAT(TrashAtNoon().RemoveAll(), IsEmpty());
    EXPECT_FALSE(HasInTrash(Noon));
    EXPECT_EQ(Content("outside/c"), QByteArray("3"));
    EXPECT_FALSE(QFileInfo::exists(Path("outside/b")));
}

TEST_F(TrashTest, ATrashThatIsALinkIsNotFollowed) {
    Write("outside/2026-01-01 12.00.00/c", "3");
    ASSERT_TRUE(QFile::link(Path("outside"), Path(".ovsync/trash")));
    EXPECT_THROW(TrashAtNoon().Entries(), LocalError);
    EXPECT_EQ(TrashAtNoon().RemoveAll().size(), 1);
    Write("a", "1");
    EXPECT_THROW(TrashAtNoon().Take(Text("a"), Text("a")), LocalError);
    EXPECT_EQ(Content("outside/2026-01-01 12.00.00/c"), QByteArray("3"));
    EXPECT_EQ(Content("a"), QByteArray("1"));
}

TEST_F(TrashTest, OnlyWhatIsOlderThanTheDaysToKeepGoes) {
    Take(AtNoon().addDays(-31), "a", "1");
    Take(AtNoon().addDays(-30).addSecs(-1), "f/g/b", "2");
    Take(AtNoon().addDays(-30), "c", "3");
    Take(AtNoon().addDays(1), "d", "of a clock that went ahead");
    EXPECT_THAT(TrashAtNoon().RemoveOld(), IsEmpty());
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-10-21 12.00.00: c, 1"), Text("2026-11-21 12.00.00: d, 26")));
    EXPECT_FALSE(HasInTrash("2026-10-20 12.00.00"));
    EXPECT_FALSE(HasInTrash("2026-10-21 11.59.59"));
    EXPECT_THAT(TrashAt(AtNoon(), 0).RemoveOld(), IsEmpty());
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-21 12.00.00: d, 26")));
    EXPECT_THAT(TrashAtNoon().RemoveAll(), IsEmpty());
    EXPECT_THAT(Listed(), IsEmpty());
}

TEST_F(TrashTest, ARemovalThatFailsIsToldOfOnceAndTheRestGoes) {
    Take(AtNoon(), "f/a", "1");
    Take(AtNoon(), "f/b", "2");
    Take(AtNoon(), "c", "3");
    Take(AtNoon().addSecs(1), "d", "4");
    tree.before = [](const char* operation, const QString& path) {
        if (QByteArray(operation) == "Remove" && path.contains(Text("/f/"))) {
            throw LocalError(path, EACCES);
        }
    };
    const QVector<SyncEvent> failures = TrashAtNoon().RemoveAll();
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures[0].path, Text(".ovsync/trash/2026-11-20 12.00.00"));
    EXPECT_TRUE(failures[0].detail.contains(Text("Permission denied"))) << failures[0].detail.toStdString();
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: f/a, 1"), Text("2026-11-20 12.00.00: f/b, 1")));
}

TEST_F(TrashTest, ANameThatIsNotUtf8IsNotListedAndItsRemovalToldOf) {
    Take(AtNoon(), "a", "1");
    const QByteArray pass = Path(".ovsync/trash/2026-11-20 12.00.00/").toUtf8();
    ASSERT_EQ(mkdir((pass + "\xFF").constData(), 0777), 0);
    ASSERT_EQ(mkdir((pass + "\xFF/b").constData(), 0777), 0);
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: a, 1")));
    EXPECT_EQ(TrashAtNoon().RemoveAll().size(), 1);
    EXPECT_FALSE(HasInTrash("2026-11-20 12.00.00/a"));
    // QTemporaryDir cannot remove them either.
    EXPECT_EQ(rmdir((pass + "\xFF/b").constData()), 0);
    EXPECT_EQ(rmdir((pass + "\xFF").constData()), 0);
}

TEST_F(TrashTest, APassRemovesWhatIsTooOldAndATrialNothing) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    Take(now.addDays(-31), "old", "1");
    Take(now.addDays(-29), "young", "2");
    options.isDryRun = true;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Listed().size(), 2);
    options.isDryRun = false;
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Listed().size(), 1);
    EXPECT_FALSE(TrashAtNoon().Find(Text("old"), std::nullopt));
    options.daysKept = 28;
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_THAT(Listed(), IsEmpty());
}

TEST_F(TrashTest, APassTellsOfARemovalThatFailsAndGoesOn) {
    Take(AtNoon().addYears(-10), "old", "1");
    service.Put(Text("a"), "new");
    tree.before = [](const char* operation, const QString& path) {
        if (QByteArray(operation) == "Remove" && path.endsWith(Text("/old"))) {
            throw LocalError(path, EIO);
        }
    };
    EXPECT_EQ(Pull(), SyncOutcome::LeftSome);
    EXPECT_EQ(Told(), QStringList(Text("Refused .ovsync/trash/2016-11-20 12.00.00")));
    EXPECT_EQ(Content("a"), QByteArray("new"));
}

TEST_F(TrashTest, WhatWasRestoredStaysInAPullAndIsSentByAPush) {
    service.Put(Text("f/a"), "1");
    service.Put(Text("b"), "stays");
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    service.Put(Text("b"), "newer");
    service.Remove(Text("f/a"));
    options.deletes = true;
    ASSERT_EQ(Pull(), SyncOutcome::InStep);
    ASSERT_EQ(Content("f/a"), QByteArray("(none)"));

    EXPECT_EQ(Restore("f/a", "f/a"), QString());
    Remove("b");
    EXPECT_EQ(Restore("b", "b"), QString());
    EXPECT_EQ(Pull(), SyncOutcome::InStep);
    EXPECT_EQ(Content("f/a"), QByteArray("1"));
    EXPECT_EQ(Content("b"), QByteArray("stays"));
    EXPECT_EQ(Push(), SyncOutcome::InStep);
    EXPECT_EQ(Told(), QStringList({Text("Sent b"), Text("Sent f/a")}));
}

TEST_F(TrashTest, AFolderThatIsEmptiedWhileItIsListedIsPassedOver) {
    Take(AtNoon(), "a", "1");
    Take(AtNoon(), "f/b", "2");
    tree.before = [this](const char* operation, const QString& path) {
        if (QByteArray(operation) == "List" && path.contains(Text("/f"))) {
            QDir(Path(".ovsync/trash/2026-11-20 12.00.00/f")).removeRecursively();
        }
    };
    EXPECT_THAT(Listed(), ElementsAre(Text("2026-11-20 12.00.00: a, 1")));
}

TEST_F(TrashTest, AFolderThatCannotBeReadIsAnErrorAndNoShorterListing) {
    Take(AtNoon(), "a", "1");
    Take(AtNoon(), "f/b", "2");
    tree.before = [](const char* operation, const QString& path) {
        if (QByteArray(operation) == "List" && path.contains(Text("/f"))) {
            throw LocalError(path, EACCES);
        }
    };
    EXPECT_THROW(TrashAtNoon().Entries(), LocalError);
}

TEST_F(TrashTest, AThousandFilesAreReadWithOneListingAFolder) {
    for (int i = 0; i < 1000; ++i) {
        Write((".ovsync/trash/2026-11-20 12.00.00/f" + QByteArray::number(i % 10) + "/" + QByteArray::number(i))
                  .constData(),
              "1");
    }
    int operations = 0;
    tree.before = [&operations](const char*, const QString&) { ++operations; };
    EXPECT_EQ(TrashAtNoon().Entries().size(), 1000);
    // The trash twice, the pass, and its ten folders.
    EXPECT_EQ(operations, 13);
}

}  // namespace
