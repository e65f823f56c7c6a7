#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::Service;
using tests::Text;

class PullTest : public testing::Test {
protected:
    ProgramResult Pull(const QStringList& options = QStringList()) {
        return RunOvsync(QStringList{Text("pull"), _service.Url(), _folder.path()} + options);
    }

    void ExpectPull(int exitCode, const QStringList& options = QStringList()) {
        const ProgramResult result = Pull(options);
        EXPECT_EQ(result.exitCode, exitCode) << result.output.toStdString() << result.errors.toStdString();
    }

    QString Path(const char* path) const { return _folder.filePath(Text(path)); }

    QByteArray Content(const char* path) const {
        QFile file(Path(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
    }

    void Write(const char* path, const QByteArray& content) {
        QFile file(Path(path));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path;
        ASSERT_EQ(file.write(content), content.size());
    }

    /// Without the hidden folder.
    QStringList Names(const char* path = "") const {
        QStringList names =
            QDir(Path(path))
                .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
        names.removeAll(Text(".ovsync"));
        return names;
    }

    Service _service;
    QTemporaryDir _folder;
};

TEST_F(PullTest, AFolderComesWholeAndStaysInStep) {
    _service.AddFile(Text("a/b/\xC3\xBC #%.txt"), "1");
    _service.AddFile(Text("empty"), "");
    _service.AddFile(Text("big"), QByteArray(3000000, 'x'));
    _service.AddFolder(Text("c"));
    ExpectPull(0);
    EXPECT_EQ(Content("a/b/\xC3\xBC #%.txt"), QByteArray("1"));
    EXPECT_EQ(Content("empty"), QByteArray());
    EXPECT_EQ(Content("big").size(), 3000000);
    EXPECT_EQ(Names(), QStringList({Text("a"), Text("big"), Text("c"), Text("empty")}));
    EXPECT_THAT(Pull().output.toStdString(), HasSubstr("Nothing to do"));

    _service.AddFile(Text("empty"), "no more");
    _service.AddFile(Text("new"), "2");
    ExpectPull(0);
    EXPECT_EQ(Content("empty"), QByteArray("no more"));
    EXPECT_EQ(Content("new"), QByteArray("2"));
}

TEST_F(PullTest, WhatChangedHereIsNeverOverwritten) {
    _service.AddFile(Text("a.txt"), "old");
    ExpectPull(0);
    Write("a.txt", "mine");
    _service.AddFile(Text("a.txt"), "theirs");
    ExpectPull(1);
    EXPECT_EQ(Content("a.txt"), QByteArray("mine"));
    ASSERT_EQ(Names().size(), 2);
    const QByteArray copy = Names().first().toUtf8();
    EXPECT_THAT(copy.toStdString(), HasSubstr("a (from the service, "));
    EXPECT_EQ(Content(copy.constData()), QByteArray("theirs"));
    // Told again, but not fetched again.
    ExpectPull(1);
    EXPECT_EQ(Names().size(), 2);
}

TEST_F(PullTest, FilesWithoutARecordAreAdoptedWhenTheyAreTheSame) {
    _service.AddFile(Text("same"), "1");
    _service.AddFile(Text("other"), "2");
    Write("same", "1");
    Write("other", "3");
    Write("mine", "4");
    const ProgramResult result = Pull();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors.toStdString(), AllOf(HasSubstr("conflict other: "), Not(HasSubstr("same"))));
    EXPECT_EQ(Content("other"), QByteArray("3"));
    EXPECT_EQ(Content("mine"), QByteArray("4"));
    _service.AddFile(Text("same"), "11");
    ExpectPull(1);
    EXPECT_EQ(Content("same"), QByteArray("11"));
}

TEST_F(PullTest, WhatTheServiceDeletedGoesOnlyWhenAskedForAndUnchanged) {
    _service.AddFile(Text("f/a"), "1");
    _service.AddFile(Text("f/b"), "2");
    _service.AddFile(Text("stays"), "3");
    ExpectPull(0);
    Write("f/b", "changed");
    Write("f/c", "mine");
    _service.Remove(Text("f/a"));
    _service.Remove(Text("f/b"));
    const ProgramResult kept = Pull();
    EXPECT_EQ(kept.exitCode, 1);
    EXPECT_THAT(kept.errors.toStdString(), AllOf(HasSubstr("kept f/a"), HasSubstr("kept f/b")));
    EXPECT_EQ(Names("f"), QStringList({Text("a"), Text("b"), Text("c")}));
    ExpectPull(1, {Text("--delete")});
    EXPECT_EQ(Names("f"), QStringList({Text("b"), Text("c")}));
    EXPECT_EQ(Content("f/b"), QByteArray("changed"));
}

TEST_F(PullTest, AFileLostHereComesAgain) {
    _service.AddFile(Text("a"), "1");
    ExpectPull(0);
    ASSERT_TRUE(QFile::remove(Path("a")));
    ExpectPull(0);
    EXPECT_EQ(Content("a"), QByteArray("1"));
}

TEST_F(PullTest, ADryRunChangesNothing) {
    _service.AddFile(Text("a/b"), "1");
    const ProgramResult result = Pull({Text("--dry-run")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, QByteArray("would make a\nwould fetch a/b\nWould fetch 1, make 1 folder (1 B)\n"));
    EXPECT_EQ(QDir(_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), QStringList());
}

TEST_F(PullTest, ExcludedFilesAreLeftAloneOnBothSides) {
    _service.AddFile(Text("a.tmp"), "1");
    _service.AddFile(Text("b/c"), "2");
    ExpectPull(0);
    _service.Remove(Text("a.tmp"));
    _service.AddFile(Text("b/c"), "22");
    ExpectPull(0, {Text("--delete"), Text("--exclude"), Text("*.tmp"), Text("--exclude"), Text("b")});
    EXPECT_EQ(Content("a.tmp"), QByteArray("1"));
    EXPECT_EQ(Content("b/c"), QByteArray("2"));
    // Another exclusion is another folder: nothing on the service has changed since.
    ExpectPull(0, {Text("--delete")});
    EXPECT_EQ(Names(), QStringList(Text("b")));
    EXPECT_EQ(Content("b/c"), QByteArray("22"));
}

TEST_F(PullTest, LinksAreNeitherFollowedNorReplaced) {
    const QTemporaryDir elsewhere;
    _service.AddFile(Text("a/b"), "1");
    _service.AddFile(Text("c"), "2");
    ASSERT_TRUE(QFile::link(elsewhere.path(), Path("a")));
    ASSERT_TRUE(QFile::link(elsewhere.filePath(Text("x")), Path("c")));
    const ProgramResult result = Pull();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors.toStdString(), AllOf(HasSubstr("refused a: "), HasSubstr("refused c: ")));
    EXPECT_TRUE(QDir(elsewhere.path()).isEmpty());
    EXPECT_EQ(QFile(Path("a")).symLinkTarget(), elsewhere.path());
}

TEST_F(PullTest, EventsCanBeReadByPrograms) {
    _service.AddFile(Text("a"), "123");
    const ProgramResult result = Pull({Text("--json")});
    EXPECT_EQ(result.exitCode, 0);
    const QList<QByteArray> lines = result.output.trimmed().split('\n');
    const nlohmann::json first = nlohmann::json::parse(lines.first().constData());
    EXPECT_EQ(first, nlohmann::json({{"event", "fetched"}, {"path", "a"}, {"bytes", 3}}));
    const nlohmann::json last = nlohmann::json::parse(lines.last().constData());
    EXPECT_EQ(last["event"], "summary");
    EXPECT_EQ(last["outcome"], "inStep");
    EXPECT_EQ(last["fetched"], 1);
    EXPECT_EQ(last["bytes"], 3);
}

TEST_F(PullTest, AFolderBelongsToOneFolderOfAService) {
    _service.AddFile(Text("a/b"), "1");
    ExpectPull(0);
    const ProgramResult result = RunOvsync({Text("pull"), _service.Url() + Text("a/"), _folder.path()});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors.toStdString(), HasSubstr("cannot be synced with"));
    EXPECT_EQ(Names(), QStringList(Text("a")));
}

TEST_F(PullTest, AMissingFolderIsMade) {
    _service.AddFile(Text("a/b"), "1");
    const ProgramResult trial = RunOvsync({Text("pull"), Text("--dry-run"), _service.Url(), Path("new/")});
    EXPECT_EQ(trial.exitCode, 0) << trial.errors.toStdString();
    EXPECT_EQ(trial.output, QByteArray("would make a\nwould fetch a/b\nWould fetch 1, make 1 folder (1 B)\n"));
    EXPECT_EQ(Names(), QStringList());
    const ProgramResult result = RunOvsync({Text("pull"), _service.Url(), Path("new/")});
    EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
    EXPECT_EQ(Content("new/a/b"), QByteArray("1"));
}

TEST_F(PullTest, NoFolderIsMadeForWhatCannotBePulled) {
    _service.AddFile(Text("a"), "1");
    Write("file", "2");
    ASSERT_TRUE(QFile::link(Path("nowhere"), Path("link")));
    const QStringList before = Names();
    const auto expectError = [this](const char* url, const char* folder, int exitCode, const char* error) {
        for (const QStringList& options : {QStringList(), QStringList(Text("--dry-run"))}) {
            const ProgramResult result =
                RunOvsync(QStringList({Text("pull"), _service.Url() + Text(url), Path(folder)}) + options);
            EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
            EXPECT_EQ(result.output, QByteArray());
            EXPECT_THAT(result.errors.toStdString(), HasSubstr(error));
        }
    };
    expectError("gone", "new", 1, "no folder ");
    expectError("a", "new", 2, "\"a\" is a file");
    expectError("", "gone/new", 2, "there is no folder");
    expectError("", "file/new", 2, "file/new: Not a directory");
    expectError("", "file", 2, "file\" is not a folder");
    expectError("", "link", 2, "link: No such file or directory");
    EXPECT_EQ(Names(), before);
    const ProgramResult result = RunOvsync({Text("pull"), _service.Url(), QString()});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors.toStdString(), HasSubstr("no folder is named"));
}

TEST_F(PullTest, AFolderThatCannotBeWrittenIsNamed) {
    _service.AddFile(Text("a"), "1");
    ASSERT_TRUE(QFile::setPermissions(_folder.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    // Root may write everywhere, unless it gives that up.
    QStringList command({Text(OVSYNC_PROGRAM), Text("pull"), _service.Url(), _folder.path()});
    if (geteuid() == 0) {
        command = QStringList({Text("setpriv"), Text("--bounding-set"), Text("-all")}) + command;
    }
    const auto errorsOf = [&command](const QStringList& options) {
        QProcess process;
        process.start(command.first(), command.mid(1) + options);
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), options.isEmpty() ? 1 : 0);
        return process.readAllStandardError().toStdString();
    };
    EXPECT_EQ(errorsOf({}),
              "ovsync: the folder \"" + _folder.path().toStdString() + "\" cannot be written: Permission denied\n");
    EXPECT_EQ(errorsOf({Text("-n")}), "");
    ASSERT_TRUE(QFile::setPermissions(_folder.path(),
                                      QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
}

TEST_F(PullTest, WhatCannotBeSyncedIsNamed) {
    _service.AddFile(Text("a"), "1");
    const auto errorOf = [](const QString& url, const QString& folder, int exitCode) {
        const ProgramResult result = RunOvsync({Text("pull"), url, folder});
        EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
        EXPECT_EQ(result.output, QByteArray());
        return result.errors.toStdString();
    };
    EXPECT_THAT(errorOf(_service.Url() + Text("gone"), _folder.path(), 1),
                HasSubstr("there is no folder \"gone\" on 127.0.0.1:"));
    EXPECT_THAT(errorOf(_service.Url() + Text("a"), _folder.path(), 2), HasSubstr("\"a\" is a file"));
    EXPECT_EQ(Names(), QStringList());
}

class ResumedPullTest : public testing::Test {
protected:
    int Pull() {
        const ProgramResult result = RunOvsync({Text("pull"), _service.Url(), _folder.path()});
        EXPECT_EQ(ErrorsOf(result).empty(), result.exitCode == 0) << ErrorsOf(result);
        return result.exitCode;
    }

    QFileInfoList Parts() const {
        return QDir(_folder.path()).entryInfoList({Text("*SyncTemp}")}, QDir::Files | QDir::Hidden);
    }

    QByteArray Content() const {
        QFile file(_folder.filePath(Text("large")));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
    }

    // More than so much never comes at once, so that only who goes on gets to the end.
    Service _service{{Text("--fault"), Text("cut=2500000,method=GET")}};
    QTemporaryDir _folder;
};

TEST_F(ResumedPullTest, WhatAnEarlierPullGotOfALargeFileIsNotFetchedAgain) {
    const QByteArray content = QByteArray("0123456789").repeated(600000);
    _service.AddFile(Text("large"), content);
    EXPECT_EQ(Pull(), 3);
    EXPECT_EQ(Parts().size(), 1);
    EXPECT_EQ(Pull(), 3);
    EXPECT_EQ(Pull(), 0);
    EXPECT_EQ(Content(), content);
    EXPECT_EQ(Parts().size(), 0);
}

TEST_F(ResumedPullTest, NorIsWhatAKilledOneGot) {
    const QByteArray content = QByteArray("0123456789").repeated(400000);
    _service.AddFile(Text("large"), content);
    QProcess process;
    process.start(Text(OVSYNC_PROGRAM),
                  {Text("pull"), Text("--bandwidth"), Text("800K"), _service.Url(), _folder.path()});
    const auto hasMuch = [this] { return !Parts().isEmpty() && Parts().first().size() > 2300000; };
    while (!hasMuch() && !process.waitForFinished(50)) {
    }
    process.kill();
    process.waitForFinished();
    EXPECT_EQ(Parts().size(), 1);
    EXPECT_EQ(Pull(), 0);
    EXPECT_EQ(Content(), content);
    EXPECT_EQ(Parts().size(), 0);
}

}  // namespace
