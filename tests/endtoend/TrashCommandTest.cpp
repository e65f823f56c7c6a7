#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>

#include "client/store/RecordDatabase.h"
#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::store::RecordDatabase;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;
using tests::ErrorsOf;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::Service;
using tests::Text;

class TrashCommandTest : public testing::Test {
protected:
    TrashCommandTest() { QDir(_folder.path()).mkdir(Text(".ovsync")); }

    ProgramResult Trash(const char* command, const QStringList& arguments = QStringList()) const {
        return RunOvsync(QStringList{Text("trash"), Text(command), _folder.path()} + arguments);
    }

    void ExpectDone(const char* command, const QStringList& arguments = QStringList()) const {
        const ProgramResult result = Trash(command, arguments);
        EXPECT_EQ(result.exitCode, 0) << ErrorsOf(result);
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_EQ(result.errors, QByteArray());
    }

    static void ExpectError(const ProgramResult& result, int exitCode, const char* message) {
        EXPECT_EQ(result.exitCode, exitCode) << message;
        EXPECT_EQ(result.output, QByteArray());
        EXPECT_THAT(ErrorsOf(result), AllOf(StartsWith("ovsync: "), HasSubstr(message)));
    }

    void ExpectRestoreError(const QStringList& arguments, int exitCode, const char* message) const {
        ExpectError(Trash("restore", arguments), exitCode, message);
    }

    QString Path(const char* path) const { return _folder.filePath(Text(path)); }

    void Write(const char* path, const QByteArray& content) const {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(Path(path)).path()));
        QFile file(Path(path));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path;
        ASSERT_EQ(file.write(content), content.size());
    }

    /// What a pass, by the name of its folder, put into the trash.
    void PutIntoTrash(const char* passAndPath, const QByteArray& content) const {
        Write((QByteArray(".ovsync/trash/") + passAndPath).constData(), content);
    }

    QByteArray Content(const char* path) const {
        QFile file(Path(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
    }

    QTemporaryDir _folder;
};

TEST_F(TrashCommandTest, WhatPullsReplacedAndDeletedIsListedAndComesBack) {
    Service service;
    service.AddFile(Text("f/\xC3\xBC x.txt"), "old");
    service.AddFile(Text("stays"), "1");
    const QStringList pull({Text("pull"), service.Url(), _folder.path(), Text("--delete")});
    ASSERT_EQ(RunOvsync(pull).exitCode, 0);
    service.AddFile(Text("f/\xC3\xBC x.txt"), "newer");
    ASSERT_EQ(RunOvsync(pull).exitCode, 0);
    service.Remove(Text("f/\xC3\xBC x.txt"));
    ASSERT_EQ(RunOvsync(pull).exitCode, 0);
    ASSERT_EQ(Content("f/\xC3\xBC x.txt"), QByteArray("(not there)"));

    const ProgramResult listed = Trash("list");
    EXPECT_EQ(listed.exitCode, 0) << ErrorsOf(listed);
    EXPECT_THAT(
        listed.output.toStdString(),
        MatchesRegex("[-0-9]+T[:0-9]+Z +3  f/\xC3\xBC x\\.txt\n[-0-9]+T[:0-9]+Z(-2|  ) +5  f/\xC3\xBC x\\.txt\n"));
    ExpectDone("restore", {Text("f/\xC3\xBC x.txt")});
    EXPECT_EQ(Content("f/\xC3\xBC x.txt"), QByteArray("newer"));
    ExpectDone("restore", {Text("f/\xC3\xBC x.txt"), Text("--to"), Text("first \xC3\xBC/x")});
    EXPECT_EQ(Content("first \xC3\xBC/x"), QByteArray("old"));
    EXPECT_EQ(Trash("list").output, QByteArray());
    // They are of this side alone now.
    EXPECT_EQ(RunOvsync(pull).exitCode, 0);
    EXPECT_EQ(Content("f/\xC3\xBC x.txt"), QByteArray("newer"));
}

TEST_F(TrashCommandTest, WithoutATrashThereIsNothing) {
    ExpectDone("list");
    EXPECT_EQ(Trash("list", {Text("--json")}).output, QByteArray("[]\n"));
    ExpectRestoreError({Text("a")}, 1, "no file \"a\" in the trash");
    ExpectDone("empty");
    EXPECT_EQ(Trash("empty", {Text("--json")}).output, QByteArray("{\"left\":[]}\n"));
}

TEST_F(TrashCommandTest, EntriesAreListedByTimeAndPath) {
    PutIntoTrash("2026-11-20 10.15.31/a", "1");
    PutIntoTrash("2026-11-20 10.15.30/b", QByteArray(1234567, 'x'));
    PutIntoTrash("2026-11-20 10.15.30/a b/\xC3\xBC", "");
    PutIntoTrash("2026-11-20 10.15.30 2/b", "12");
    PutIntoTrash("mine/c", "not of a pass");
    EXPECT_EQ(Trash("list").output, QByteArray("2026-11-20T10:15:30Z             0  a b/\xC3\xBC\n"
                                               "2026-11-20T10:15:30Z       1234567  b\n"
                                               "2026-11-20T10:15:30Z-2             2  b\n"
                                               "2026-11-20T10:15:31Z             1  a\n"));
    const ProgramResult result = Trash("list", {Text("--json")});
    const nlohmann::json json = nlohmann::json::parse(result.output.toStdString());
    ASSERT_EQ(json.size(), 4U);
    EXPECT_EQ(json[0]["path"], "a b/\xC3\xBC");
    EXPECT_EQ(json[2],
              (nlohmann::json{
                  {"time", "2026-11-20T10:15:30Z"}, {"from", "2026-11-20T10:15:30Z-2"}, {"size", 2}, {"path", "b"}}));
}

TEST_F(TrashCommandTest, TheNewestComesBackUnlessATimeIsGiven) {
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    PutIntoTrash("2026-11-20 10.15.30 2/a", "2");
    PutIntoTrash("2026-11-21 10.15.30/a", "3");
    PutIntoTrash("2026-11-22 10.15.30/other", "4");
    ExpectRestoreError({Text("a"), Text("--from"), Text("2026-11-22T10:15:30Z")}, 1, "\"a\" of 2026-11-22T10:15:30Z");
    ExpectRestoreError({Text("a"), Text("--from"), Text("2026-11-20T10:15:30Z-3")}, 1, "in the trash");
    ExpectDone("restore", {Text("a"), Text("--from"), Text("2026-11-20T10:15:30Z-2"), Text("--to"), Text("second")});
    ExpectDone("restore", {Text("a"), Text("--from"), Text("2026-11-20T10:15:30Z"), Text("--to"), Text("first")});
    const ProgramResult result = Trash("restore", {Text("a"), Text("--json")});
    EXPECT_EQ(result.output, QByteArray("{\"from\":\"2026-11-21T10:15:30Z\",\"path\":\"a\",\"to\":\"a\"}\n"));
    EXPECT_EQ(Content("first"), QByteArray("1"));
    EXPECT_EQ(Content("second"), QByteArray("2"));
    EXPECT_EQ(Content("a"), QByteArray("3"));
}

TEST_F(TrashCommandTest, WhatIsThereIsNeverOverwritten) {
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    PutIntoTrash("2026-11-20 10.15.30/x/y", "2");
    Write("a", "mine");
    Write("x", "a file now");
    ExpectRestoreError({Text("a")}, 1, "something at \"a\"");
    ExpectRestoreError({Text("a")}, 1, "--to NAME");
    ExpectRestoreError({Text("x/y")}, 1, "something at \"x\"");
    ExpectRestoreError({Text("a"), Text("--to"), Text("x")}, 1, "something at \"x\"");
    EXPECT_EQ(Content("a"), QByteArray("mine"));
    EXPECT_EQ(Content("x"), QByteArray("a file now"));
    ExpectDone("restore", {Text("a"), Text("--to"), Text("new/folder/a")});
    EXPECT_EQ(Content("new/folder/a"), QByteArray("1"));
}

TEST_F(TrashCommandTest, AFileComesBackIntoAFolderThatIsGone) {
    PutIntoTrash("2026-11-20 10.15.30/a/b c/\xC3\xBC", "1");
    ExpectDone("restore", {Text("a/b c/\xC3\xBC")});
    EXPECT_EQ(Content("a/b c/\xC3\xBC"), QByteArray("1"));
    EXPECT_FALSE(QFileInfo::exists(Path(".ovsync/trash/2026-11-20 10.15.30")));
}

TEST_F(TrashCommandTest, NothingIsRestoredOutsideTheFolder) {
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    const QTemporaryDir outside;
    const QString absolute = outside.filePath(Text("a"));
    for (const QString& to : {Text("../a"), Text("b/../../a"), Text(".."), Text("."), Text(""), Text("b/"), absolute,
                              Text(".ovsync/a"), Text("b//a"), Text("\xFF")}) {
        ExpectRestoreError({Text("a"), Text("--to"), to}, 2, "--to \"");
    }
    ASSERT_TRUE(QFile::link(outside.path(), Path("link")));
    ExpectRestoreError({Text("a"), Text("--to"), Text("link/a")}, 1, "something at \"link\"");
    EXPECT_FALSE(QFileInfo::exists(absolute));
    EXPECT_EQ(Content(".ovsync/trash/2026-11-20 10.15.30/a"), QByteArray("1"));
}

TEST_F(TrashCommandTest, APathThatTheTrashDoesNotHaveIsToldOf) {
    PutIntoTrash("2026-11-20 10.15.30/f/a", "1");
    const QString longName(5000, QLatin1Char('x'));
    for (const QString& path : {Text("b"), Text("f"), Text("f/"), Text("/f/a"), Text("../trash"), Text("."), Text(""),
                                Text("../../records.db"), longName}) {
        ExpectRestoreError({path}, 1, "in the trash");
    }
}

TEST_F(TrashCommandTest, ALinkInTheTrashIsNeverFollowed) {
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    Write("outside/b", "stays");
    ASSERT_TRUE(QFile::link(Path("outside"), Path(".ovsync/trash/2026-11-20 10.15.30/folder")));
    ASSERT_TRUE(QFile::link(Path("outside/b"), Path(".ovsync/trash/2026-11-20 10.15.30/file")));
    ASSERT_TRUE(QFile::link(Path("outside"), Path(".ovsync/trash/2026-11-20 10.15.31")));
    EXPECT_EQ(Trash("list").output, QByteArray("2026-11-20T10:15:30Z             1  a\n"));
    ExpectRestoreError({Text("file")}, 1, "in the trash");
    ExpectRestoreError({Text("folder/b")}, 1, "in the trash");
    ExpectRestoreError({Text("b")}, 1, "in the trash");
    ExpectDone("empty");
    EXPECT_FALSE(QFileInfo::exists(Path(".ovsync/trash/2026-11-20 10.15.30")));
    EXPECT_EQ(Content("outside/b"), QByteArray("stays"));
}

TEST_F(TrashCommandTest, AllGoesOrOnlyWhatIsOlder) {
    const auto passOf = [](int days) {
        return QDateTime::currentDateTimeUtc().addDays(-days).toString(Text("yyyy-MM-dd HH.mm.ss")).toUtf8();
    };
    PutIntoTrash((passOf(11) + "/f/a").constData(), "1");
    PutIntoTrash((passOf(9) + "/b").constData(), "2");
    PutIntoTrash("mine/c", "not of a pass");
    ExpectDone("empty", {Text("--older-than"), Text("10")});
    EXPECT_THAT(Trash("list").output.toStdString(), MatchesRegex("[^\n]+  b\n"));
    ExpectDone("empty");
    EXPECT_EQ(Trash("list").output, QByteArray());
    EXPECT_EQ(QDir(Path(".ovsync/trash")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
              QStringList(Text("mine")));
}

TEST_F(TrashCommandTest, WhatCannotBeRemovedIsToldOfAndTheRestGoes) {
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    PutIntoTrash("2026-11-20 10.15.31/b", "2");
    // A name that is no UTF-8 can be removed by nobody who names it in UTF-8.
    const QByteArray odd = Path(".ovsync/trash/2026-11-20 10.15.30/").toUtf8() + "\xFF";
    ASSERT_EQ(mkdir(odd.constData(), 0777), 0);
    const ProgramResult result = Trash("empty", {Text("--json")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(ErrorsOf(result), HasSubstr(".ovsync/trash/2026-11-20 10.15.30: it cannot be removed: "));
    const nlohmann::json json = nlohmann::json::parse(result.output.toStdString());
    ASSERT_EQ(json["left"].size(), 1U);
    EXPECT_EQ(json["left"][0]["path"], ".ovsync/trash/2026-11-20 10.15.30");
    EXPECT_EQ(Trash("list").output, QByteArray());
    EXPECT_EQ(rmdir(odd.constData()), 0);
}

TEST_F(TrashCommandTest, NothingChangesWhileAPassHasTheFolderOpen) {
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    const RecordDatabase pass(_folder.path(), RecordDatabase::Access::Change);
    ExpectRestoreError({Text("a")}, 1, "another process is syncing this folder");
    ExpectError(Trash("empty"), 1, "another process is syncing this folder");
    EXPECT_EQ(Trash("list").output, QByteArray("2026-11-20T10:15:30Z             1  a\n"));
}

TEST_F(TrashCommandTest, AFolderThatIsNotSyncedIsRefused) {
    const QTemporaryDir other;
    QFile file(other.filePath(Text("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(QDir(other.path()).mkpath(Text("linked")));
    ASSERT_TRUE(QFile::link(Path(".ovsync"), other.filePath(Text("linked/.ovsync"))));
    const auto expect = [](const QString& directory, const char* message) {
        ExpectError(RunOvsync({Text("trash"), Text("list"), directory}), 2, message);
        ExpectError(RunOvsync({Text("trash"), Text("empty"), directory}), 2, message);
        ExpectError(RunOvsync({Text("trash"), Text("restore"), directory, Text("a")}), 2, message);
    };
    expect(other.path(), "is no synced folder");
    expect(file.fileName(), "is no synced folder");
    expect(other.filePath(Text("linked")), "is no synced folder");
    expect(other.filePath(Text("missing")), "No such file or directory");
    expect(QString(), "no folder is named");
    EXPECT_FALSE(QFileInfo::exists(other.filePath(Text(".ovsync"))));
}

TEST_F(TrashCommandTest, WrongUsageSaysWhatIsWrong) {
    const auto expect = [](const QStringList& arguments, const char* message) {
        ExpectError(RunOvsync(QStringList(Text("trash")) + arguments), 2, message);
    };
    const QString& directory = _folder.path();
    expect({}, "subcommand is required");
    expect({Text("burn")}, "burn is not known here");
    expect({Text("list")}, "DIR is required");
    expect({Text("restore"), directory}, "PATH is required");
    expect({Text("empty"), directory, Text("more")}, "more");
    expect({Text("empty"), directory, Text("--older-than"), Text("soon")}, "--older-than");
    expect({Text("empty"), directory, Text("--older-than"), Text("-1")}, "--older-than");
    expect({Text("empty"), directory, Text("--older-than")}, "--older-than");
    PutIntoTrash("2026-11-20 10.15.30/a", "1");
    for (const char* time : {"", "yesterday", "2026-11-20", "2026-11-20 10.15.30", "2026-11-20T10:15:30Z-",
                             "2026-11-20T10:15:30Z-0", "2026-11-20T10:15:30Z-1", "2026-11-20T10:15:30Z-x",
                             "2026-11-20T10:15:30Z-99999999999", "2026-02-30T10:15:30Z"}) {
        expect({Text("restore"), directory, Text("a"), Text("--from"), Text(time)}, "--from \"");
    }
}

TEST_F(TrashCommandTest, APassKeepsForAsManyDaysAsItIsTold) {
    const Service service;
    const QByteArray old =
        QDateTime::currentDateTimeUtc().addDays(-40).toString(Text("yyyy-MM-dd HH.mm.ss")).toUtf8() + "/a";
    PutIntoTrash(old.constData(), "1");
    const auto push = [this, &service](const char* days) {
        EXPECT_EQ(RunOvsync({Text("push"), _folder.path(), service.Url(), Text("--keep-deleted"), Text(days)}).exitCode,
                  0);
    };
    push("50");
    EXPECT_EQ(Content((".ovsync/trash/" + old).constData()), QByteArray("1"));
    push("30");
    EXPECT_EQ(Content((".ovsync/trash/" + old).constData()), QByteArray("(not there)"));
}

}  // namespace
