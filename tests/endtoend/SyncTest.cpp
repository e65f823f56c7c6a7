#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::RunTyped;
using tests::Service;
using tests::Text;

/// Two folders that are synced with one of the service.
class SyncCommandTest : public testing::Test {
protected:
    void ExpectSync(const QString& directory, int exitCode, const QByteArray& output,
                    const QStringList& options = QStringList()) {
        const ProgramResult result = RunOvsync(QStringList({Text("sync"), directory, _service.Url()}) + options);
        EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
        EXPECT_THAT((result.output + result.errors).toStdString(), HasSubstr(output.toStdString()));
    }

    QString First(const char* path) const { return _first.filePath(Text(path)); }
    QString Second(const char* path) const { return _folders.filePath(Text("second/") + Text(path)); }
    QString SecondFolder() const { return _folders.filePath(Text("second")); }

    static void Write(const QString& path, const QByteArray& content) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    static QByteArray Content(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }

    Service _service{QStringList(Text("--verbose"))};
    QTemporaryDir _first;
    QTemporaryDir _folders;
};

TEST_F(SyncCommandTest, AFolderThatIsMissingAboveTheUrlIsNamedWithTheWayOut) {
    Write(First("a"), "1");
    for (const QStringList& command : {QStringList(Text("sync")),
                                       QStringList(Text("push")),
                                       {Text("sync"), Text("-n")},
                                       {Text("push"), Text("-n")}}) {
        const ProgramResult result =
            RunOvsync(command + QStringList({_first.path(), _service.Url() + Text("nope/x/")}));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.errors.toStdString(),
                    AllOf(HasSubstr("there is no folder \"nope\" on 127.0.0.1:"),
                          HasSubstr("\"ovsync mkdir -p '" + _service.Url().toStdString() + "nope'\" makes it")));
    }
    const QStringList both({SecondFolder(), _service.Url() + Text("nope/")});
    const ProgramResult missing = RunOvsync(QStringList(Text("sync")) + both);
    const ProgramResult trial = RunOvsync(QStringList({Text("sync"), Text("-n")}) + both);
    EXPECT_EQ(trial.exitCode, missing.exitCode);
    EXPECT_EQ(trial.errors, missing.errors);
    ASSERT_EQ(RunOvsync({Text("mkdir"), Text("-p"), _service.Url() + Text("nope/")}).exitCode, 0);
    const ProgramResult result = RunOvsync({Text("sync"), _first.path(), _service.Url() + Text("nope/x/")});
    EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
}

TEST_F(SyncCommandTest, TwoFoldersStayInStepThroughTheService) {
    Write(First("f/g/\xC3\xA9 %#.txt"), "1");
    Write(First("gone"), "1");
    Write(First("stays"), "1");
    ExpectSync(_first.path(), 0, "3 sent, 2 folders made on the service");
    ExpectSync(SecondFolder(), 0, "3 fetched, 2 folders made");
    ExpectSync(_first.path(), 0, "Nothing to do");
    ExpectSync(SecondFolder(), 0, "Nothing to do");

    ASSERT_TRUE(QDir().rename(Second("f"), Second("h")));
    ASSERT_TRUE(QDir().rename(Second("stays"), Second("renamed")));
    ASSERT_TRUE(QFile::remove(Second("gone")));
    ExpectSync(SecondFolder(), 0, "2 moved on the service, 1 deleted on the service");
    ExpectSync(_first.path(), 0, "1 deleted here, 2 moved here");
    EXPECT_EQ(Content(First("h/g/\xC3\xA9 %#.txt")), QByteArray("1"));
    EXPECT_EQ(Content(First("renamed")), QByteArray("1"));
    EXPECT_FALSE(QFile::exists(First("f")) || QFile::exists(First("gone")) || QFile::exists(First("stays")));
    ExpectSync(_first.path(), 0, "Nothing to do");
}

TEST_F(SyncCommandTest, WhatPassesKeepInAFolderIsNotSynced) {
    Write(First("a"), "1");
    ExpectSync(_first.path(), 0, "1 sent");
    Write(First(".ovsync/trash/f/a"), "1");
    ASSERT_TRUE(QFile::link(First(".ovsync"), SecondFolder()));
    for (const QString& directory : {First(".ovsync"), First(".ovsync/trash"), SecondFolder()}) {
        for (const QStringList& arguments : {QStringList({Text("sync"), directory, _service.Url()}),
                                             QStringList({Text("sync"), Text("-n"), directory, _service.Url()}),
                                             QStringList({Text("push"), directory, _service.Url()}),
                                             QStringList({Text("pull"), _service.Url(), directory})}) {
            const ProgramResult result = RunOvsync(arguments);
            EXPECT_EQ(result.exitCode, 2);
            EXPECT_THAT(ErrorsOf(result), HasSubstr("where ovsync keeps what it knows"));
        }
    }
    ExpectSync(First(".ovsync/new"), 2, "where ovsync keeps what it knows");
    EXPECT_FALSE(QFile::exists(First(".ovsync/new")));
}

TEST(SyncWithAFileTest, IsToldAlsoWhereTheServerCallsItABadRequest) {
    // The whole of it and its first level are asked for.
    Service service({Text("--fault"), Text("status=400,method=PROPFIND,request=1"), Text("--fault"),
                     Text("status=400,method=PROPFIND,request=2")});
    service.AddFile(Text("a.txt"), "a");
    const QTemporaryDir here;
    const ProgramResult result = RunOvsync({Text("sync"), here.path(), service.Url() + Text("a.txt")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors, QByteArray("ovsync: \"a.txt\" is a file, and only folders can be synced\n"));
}

TEST_F(SyncCommandTest, AFolderThatTheServiceHasNoMoreIsMadeAgainInTheWayThatIsNamed) {
    const QString url = _service.Url() + Text("folder");
    const auto run = [&](const char* command, int exitCode) {
        QStringList arguments{Text(command), _first.path(), url};
        if (arguments.first() == Text("pull")) {
            arguments.move(1, 2);
        }
        const ProgramResult result = RunOvsync(arguments);
        EXPECT_EQ(result.exitCode, exitCode) << command << ErrorsOf(result);
        return ErrorsOf(result);
    };
    Write(First("f/a"), "1");
    run("sync", 0);
    ASSERT_EQ(RunOvsync({Text("rm"), Text("-r"), url}).exitCode, 0);
    const QString way =
        Text("remove \"%1/.ovsync/records.db\" and run \"ovsync sync '%1' '%2'\"").arg(_first.path(), url);
    for (const char* command : {"sync", "pull", "push"}) {
        EXPECT_THAT(run(command, 1), AllOf(HasSubstr("is not there any more: it was deleted or moved on the service"),
                                           HasSubstr(way.toStdString()), Not(HasSubstr("ovsync folders"))));
    }
    EXPECT_EQ(Content(First("f/a")), QByteArray("1"));
    ASSERT_TRUE(QFile::remove(First(".ovsync/records.db")));
    run("sync", 0);
    EXPECT_TRUE(_service.HasFile(Text("folder/f/a")));
    EXPECT_EQ(RunOvsync({Text("check"), _first.path(), url}).exitCode, 0);
}

TEST_F(SyncCommandTest, AFolderMovesToAnotherUrlInTheWayThatIsNamed) {
    Write(First("a"), "1");
    ExpectSync(_first.path(), 0, "1 sent");
    const QString url = _service.Url() + Text("other");
    const auto sync = [&] { return RunOvsync({Text("sync"), _first.path(), url}); };
    EXPECT_THAT(ErrorsOf(sync()),
                HasSubstr((Text("run \"ovsync sync '%1' '%2'").arg(_first.path(), url)).toStdString()));
    ASSERT_TRUE(QFile::remove(First(".ovsync/records.db")));
    EXPECT_EQ(sync().exitCode, 0);
    EXPECT_TRUE(_service.HasFile(Text("other/a")));
}

TEST_F(SyncCommandTest, TooManyDeletionsAreMadeOrTakenBackByTheCommandsThatAreNamed) {
    const auto runNamed = [](const ProgramResult& result, const char* command) {
        EXPECT_EQ(result.exitCode, 1);
        const QRegularExpression quoted(Text("\"(ovsync %1 [^\"]+)\"").arg(Text(command)));
        const QString named = quoted.match(QString::fromUtf8(result.errors)).captured(1);
        EXPECT_FALSE(named.isEmpty()) << command << ErrorsOf(result);
        const ProgramResult done = RunTyped(named);
        EXPECT_EQ(done.exitCode, 0) << named.toStdString() << ErrorsOf(done);
    };
    const auto run = [](const QStringList& words) { return RunOvsync(words + QStringList(Text("--delete"))); };
    const QStringList pull{Text("pull"), _service.Url(), SecondFolder()};
    const QStringList push{Text("push"), SecondFolder(), _service.Url()};
    const auto removeHere = [this](int from, int to) {
        for (int i = from; i < to; ++i) {
            ASSERT_TRUE(QFile::remove(_folders.filePath(Text("second/%1").arg(i))));
        }
    };
    for (int i = 0; i < 40; ++i) {
        Write(_folders.filePath(Text("second/%1").arg(i)), "1");
    }
    ExpectSync(SecondFolder(), 0, "40 sent");
    removeHere(0, 25);
    runNamed(run(push), "pull");
    EXPECT_EQ(Content(Second("0")), QByteArray("1"));
    removeHere(0, 21);
    runNamed(run(push), "push --delete --max-delete 21");
    EXPECT_FALSE(_service.HasFile(Text("0")));
    for (int i = 21; i < 31; ++i) {
        _service.Remove(QString::number(i));
    }
    runNamed(run(pull), "pull --delete --max-delete 10");
    EXPECT_FALSE(QFile::exists(Second("30")));
    EXPECT_EQ(Content(Second("31")), QByteArray("1"));
}

TEST_F(SyncCommandTest, AnUnchangedFolderIsOneRequestAndAChangedFileNoListing) {
    Write(First("f/a"), "1");
    Write(First("f/b"), "1");
    ExpectSync(_first.path(), 0, "2 sent");
    // What the first pass sent is told of by the service.
    ExpectSync(_first.path(), 0, "Nothing to do");
    for (int pass = 0; pass < 2; ++pass) {
        _service.TakeRequests();
        ExpectSync(_first.path(), 0, "Nothing to do");
        EXPECT_THAT(_service.TakeRequests().join(QLatin1Char('\n')).toStdString(), MatchesRegex("REPORT / [^\n]*"));
    }
    Write(First("f/a"), "22");
    ExpectSync(_first.path(), 0, "1 sent");
    const std::string requests = _service.TakeRequests().join(QLatin1Char('\n')).toStdString();
    EXPECT_THAT(requests, AllOf(HasSubstr("PUT /f/a "), Not(HasSubstr("PROPFIND / ")), Not(HasSubstr("OPTIONS"))));

    ExpectSync(SecondFolder(), 0, "2 fetched");
    Write(Second("f/a"), "333");
    _service.AddFile(Text("f/by hand"), "1");
    _service.Remove(Text("f/b"));
    ExpectSync(SecondFolder(), 0, "1 fetched, 1 deleted here, 1 sent");
    _service.TakeRequests();
    ExpectSync(_first.path(), 0, "1 fetched, 1 updated, 1 deleted here");
    EXPECT_THAT(_service.TakeRequests().join(QLatin1Char('\n')).toStdString(), Not(HasSubstr("PROPFIND / ")));
    EXPECT_EQ(Content(First("f/a")), QByteArray("333"));
    EXPECT_EQ(Content(First("f/by hand")), QByteArray("1"));
    EXPECT_FALSE(QFile::exists(First("f/b")));
}

TEST_F(SyncCommandTest, ConflictsAreListedUntilTheyEnd) {
    Write(First("a"), "1");
    ExpectSync(_first.path(), 0, "1 sent");
    ExpectSync(SecondFolder(), 0, "1 fetched");
    Write(First("a"), "mine");
    Write(Second("a"), "theirs");
    ExpectSync(SecondFolder(), 0, "1 sent");
    ExpectSync(_first.path(), 1, "1 in conflict");
    const auto conflicts = [this](const QStringList& options) {
        const ProgramResult result = RunOvsync(QStringList({Text("conflicts"), _first.path()}) + options);
        EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
        return result.output.toStdString();
    };
    EXPECT_THAT(conflicts({}), AllOf(HasSubstr("a\n"), HasSubstr("a (from the service, "), HasSubstr("To keep yours")));
    EXPECT_THAT(conflicts({Text("--json")}), HasSubstr("[{\"path\":\"a\",\"serviceVersion\":\"a (from the service, "));
    for (const QString& copy : QDir(_first.path()).entryList({Text("a (from*")})) {
        Write(First(copy.toUtf8().constData()), "theirs and mine");
        EXPECT_THAT(conflicts({}), HasSubstr("changed here since: a (from"));
        EXPECT_THAT(conflicts({Text("--json")}), HasSubstr("\"isChanged\":true"));
        ASSERT_TRUE(QFile::remove(_first.filePath(copy)));
    }
    EXPECT_EQ(conflicts({}), "");
    EXPECT_EQ(conflicts({Text("--json")}), "[]\n");
    ExpectSync(_first.path(), 0, "1 sent");
    ExpectSync(SecondFolder(), 0, "1 updated");
    EXPECT_EQ(Content(Second("a")), QByteArray("mine"));
}

TEST_F(SyncCommandTest, AConflictIsWonByWhomTheUserNames) {
    Write(First("a"), "1");
    ExpectSync(_first.path(), 0, "1 sent");
    ExpectSync(SecondFolder(), 0, "1 fetched");
    Write(First("a"), "mine");
    Write(Second("a"), "theirs");
    ExpectSync(SecondFolder(), 0, "1 sent");
    ExpectSync(_first.path(), 2, "nobody", {Text("--conflict"), Text("nobody")});
    ExpectSync(_first.path(), 0, "1 sent", {Text("--conflict"), Text("here")});
    const ProgramResult trash = RunOvsync({Text("trash"), Text("list"), _first.path()});
    EXPECT_THAT(trash.output.toStdString(), HasSubstr("  6  a\n"));
    ExpectSync(SecondFolder(), 0, "1 updated");
    EXPECT_EQ(Content(Second("a")), QByteArray("mine"));
}

TEST_F(SyncCommandTest, WhatIsNoSyncedFolderHasNoConflicts) {
    EXPECT_EQ(RunOvsync({Text("conflicts"), _first.path()}).exitCode, 2);
}

}  // namespace
