#include "client/agent/FolderWatcher.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "client/sync/local/PathNames.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::agent::FolderWatcher;
using ovsync::local::Exclusion;
using tests::Text;

class FolderWatcherTest : public testing::Test {
protected:
    FolderWatcherTest() {
        MakeFolder("a/b/c");
        Write("a/file");
        _watcher.Watch();
        EXPECT_EQ(_watcher.Problem(), QString());
    }

    QString Path(const QString& name) const { return _folder.filePath(name); }
    void MakeFolder(const char* name) { EXPECT_TRUE(QDir().mkpath(Path(Text(name)))); }
    void Write(const QString& name) {
        QFile file(Path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
        file.write("content");
    }
    void Write(const char* name) { Write(Text(name)); }

    const QTemporaryDir _folder;
    FolderWatcher _watcher{_folder.path(), Exclusion(QStringList({Text("*.tmp"), Text("/a/cache/")}))};
};

TEST_F(FolderWatcherTest, NothingIsNothing) {
    EXPECT_FALSE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 4);
}

TEST_F(FolderWatcherTest, EveryKindOfChangeIsNoticedOnce) {
    const auto expectChange = [this](const char* what) {
        EXPECT_TRUE(_watcher.TakeChanges()) << what;
        EXPECT_FALSE(_watcher.TakeChanges()) << what;
    };
    Write("a/file");
    expectChange("written");
    Write("a/b/new");
    expectChange("made");
    ASSERT_TRUE(QFile::rename(Path(Text("a/b/new")), Path(Text("a/b/c/other"))));
    expectChange("renamed");
    ASSERT_TRUE(QFile::remove(Path(Text("a/b/c/other"))));
    expectChange("removed");
    ASSERT_EQ(link(Path(Text("a/file")).toUtf8().constData(), Path(Text("a/second")).toUtf8().constData()), 0);
    expectChange("another name");
    MakeFolder("d");
    expectChange("folder made");
    ASSERT_TRUE(QDir().rmdir(Path(Text("d"))));
    expectChange("folder removed");
}

TEST_F(FolderWatcherTest, AFileIsNoConcernUntilItsWriterClosesIt) {
    QFile file(Path(Text("slow")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("one");
    file.flush();
    EXPECT_FALSE(_watcher.TakeChanges());
    file.close();
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, ReadingAndTouchingAreNoChanges) {
    QFile file(Path(Text("a/file")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    file.readAll();
    file.close();
    EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_FALSE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, WhoMayReadAndWriteAFolderIsAChange) {
    const auto setMode = [this](const char* name, mode_t mode) {
        EXPECT_EQ(chmod(Path(Text(name)).toUtf8().constData(), mode), 0);
    };
    _watcher.HandOutPaths();
    setMode("a/b", 0555);
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.HandOutPaths(), QSet<QString>({Text("a/b")}));
    setMode("a/b", 0755);
    EXPECT_TRUE(_watcher.TakeChanges());
    setMode("", 0755);
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_TRUE(_watcher.IsAccessChanged());
    EXPECT_FALSE(_watcher.HandOutPaths());
    EXPECT_FALSE(_watcher.TakeChanges());
    EXPECT_FALSE(_watcher.IsAccessChanged());
    EXPECT_EQ(_watcher.FolderCount(), 4);
}

TEST_F(FolderWatcherTest, AFolderThatMayBeReadAgainIsWatchedWithAllThatIsInIt) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QDir().mkpath(elsewhere.filePath(Text("closed/deep"))));
    const QByteArray closed = elsewhere.filePath(Text("closed")).toUtf8();
    ASSERT_EQ(chmod(closed.constData(), 0300), 0);
    ASSERT_EQ(rename(closed.constData(), Path(Text("closed")).toUtf8().constData()), 0);
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 4);
    ASSERT_EQ(chmod(Path(Text("closed")).toUtf8().constData(), 0755), 0);
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 6);
    Write("closed/deep/file");
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, TheHiddenFolderTemporaryFilesAndWhatIsExcludedAreNoConcern) {
    MakeFolder(".ovsync/trash/x");
    Write(".ovsync/records.db");
    Write(ovsync::local::TemporaryBeside(Text("a/file")));
    Write("a/b.tmp");
    MakeFolder("a/cache/deep");
    Write("a/cache/deep/file");
    EXPECT_FALSE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 4);
}

TEST_F(FolderWatcherTest, AFileThatTakesItsPlaceIsNoticed) {
    const QString temporary = ovsync::local::TemporaryBeside(Text("a/file"));
    Write(temporary);
    EXPECT_FALSE(_watcher.TakeChanges());
    ASSERT_EQ(rename(Path(temporary).toUtf8().constData(), Path(Text("a/file")).toUtf8().constData()), 0);
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, FoldersThatComeAreWatchedWithAllThatIsInThem) {
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QDir().mkpath(elsewhere.filePath(Text("x/y/z"))));
    MakeFolder("new/deep/er");
    ASSERT_TRUE(QFile::rename(elsewhere.filePath(Text("x")), Path(Text("x"))));
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 10);
    Write("new/deep/er/file");
    EXPECT_TRUE(_watcher.TakeChanges());
    Write("x/y/z/file");
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, FoldersThatMoveAreWatchedWhereTheyAre) {
    ASSERT_TRUE(QFile::rename(Path(Text("a/b")), Path(Text("moved"))));
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 4);
    MakeFolder("moved/c/below");
    EXPECT_TRUE(_watcher.TakeChanges());
    Write("moved/c/below/file");
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, FoldersThatGoAreWatchedNoMore) {
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::rename(Path(Text("a/b")), elsewhere.filePath(Text("b"))));
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 2);
    QFile file(elsewhere.filePath(Text("b/c/file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_FALSE(_watcher.TakeChanges());
    ASSERT_TRUE(QDir(Path(Text("a"))).removeRecursively());
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 1);
}

TEST_F(FolderWatcherTest, ASyncedFolderOfItsOwnIsNotWatched) {
    MakeFolder("own/.ovsync");
    MakeFolder("own/deep");
    FolderWatcher another(_folder.path(), Exclusion());
    another.Watch();
    EXPECT_EQ(another.FolderCount(), 4);
    Write("own/file");
    Write("own/deep/file");
    EXPECT_FALSE(another.TakeChanges());
}

TEST_F(FolderWatcherTest, LinksAreNotFollowed) {
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(elsewhere.path(), Path(Text("link"))));
    _watcher.TakeChanges();
    EXPECT_EQ(_watcher.FolderCount(), 4);
}

TEST_F(FolderWatcherTest, LostEventsCountAsAChangeAndNothingIsMissedAfterwards) {
    QFile limit(QStringLiteral("/proc/sys/fs/inotify/max_queued_events"));
    ASSERT_TRUE(limit.open(QIODevice::ReadOnly));
    const int events = limit.readAll().trimmed().toInt();
    // All of them of no concern.
    const QByteArray a = Path(Text("a/1.tmp")).toUtf8();
    const QByteArray b = Path(Text("a/2.tmp")).toUtf8();
    Write("a/1.tmp");
    for (int i = 0; i < events; i += 2) {
        ASSERT_EQ(rename(a.constData(), b.constData()), 0);
        ASSERT_EQ(rename(b.constData(), a.constData()), 0);
    }
    MakeFolder("lost/deep");
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_FALSE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 6);
    Write("lost/deep/file");
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, ARootThatGoesIsToldAndWatchedAgainWhenItIsBack) {
    const QString aside = _folder.path() + Text(" aside");
    ASSERT_TRUE(QFile::rename(_folder.path(), aside));
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.Descriptor(), -1);
    EXPECT_EQ(_watcher.Problem(), Text("the folder is not there"));
    _watcher.Watch();
    EXPECT_EQ(_watcher.Problem(), Text("the folder is not there"));
    ASSERT_TRUE(QFile::rename(aside, _folder.path()));
    _watcher.Watch();
    EXPECT_EQ(_watcher.Problem(), QString());
    Write("a/file");
    EXPECT_TRUE(_watcher.TakeChanges());
}

TEST_F(FolderWatcherTest, OneThatMustNotBeReadIsLeftOut) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "root may read everything";
    }
    MakeFolder("closed");
    ASSERT_TRUE(QFile::setPermissions(Path(Text("closed")), QFileDevice::Permissions()));
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_EQ(_watcher.FolderCount(), 4);
    EXPECT_EQ(_watcher.Problem(), QString());
}

// In a namespace of users of its own, where the limit can be set.
TEST(FolderWatcherLimitTest, AReachedLimitIsToldWithTheWayOutAndNothingIsWatched) {
    const QTemporaryDir folder;
    for (const char* name : {"1", "2", "3", "4", "5"}) {
        ASSERT_TRUE(QDir().mkpath(folder.filePath(Text(name))));
    }
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const int notPossible = 77;
        if (unshare(CLONE_NEWUSER) != 0) {
            _exit(notPossible);
        }
        const int limit = open("/proc/sys/user/max_inotify_watches", O_WRONLY);
        if (limit < 0 || write(limit, "3", 1) != 1) {
            _exit(notPossible);
        }
        FolderWatcher watcher(folder.path(), Exclusion());
        watcher.Watch();
        const bool isTold = watcher.Problem().contains(Text("fs.inotify.max_user_watches"));
        _exit(isTold && watcher.Descriptor() == -1 && watcher.FolderCount() == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "no namespaces of users are to be had here";
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(FolderWatcherTest, HandsOutThePathsOfWhatChanged) {
    const auto changed = [this] {
        _watcher.TakeChanges();
        return _watcher.HandOutPaths();
    };
    // What was there before it watched may be anything.
    EXPECT_FALSE(changed());
    EXPECT_EQ(changed(), QSet<QString>());
    Write("a/file");
    Write("a/x.tmp");
    EXPECT_EQ(changed(), QSet<QString>({Text("a/file")}));
    ASSERT_TRUE(QDir().rename(Path(Text("a/b")), Path(Text("d"))));
    EXPECT_EQ(changed(), QSet<QString>({Text("a/b"), Text("d")}));
    Write("d/c/new");
    EXPECT_EQ(changed(), QSet<QString>({Text("d/c/new")}));
    MakeFolder("e/f");
    EXPECT_EQ(changed(), QSet<QString>({Text("e")}));
    _watcher.Doubt();
    Write("a/file");
    EXPECT_FALSE(changed());
    EXPECT_EQ(changed(), QSet<QString>());
}

TEST_F(FolderWatcherTest, APathThatIsNotUtf8MayBeAnything) {
    _watcher.HandOutPaths();
    const QByteArray name = _folder.path().toUtf8() + "/\xE9";
    const int file = open(name.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
    ASSERT_GE(file, 0);
    close(file);
    EXPECT_TRUE(_watcher.TakeChanges());
    EXPECT_FALSE(_watcher.HandOutPaths());
}

}  // namespace
