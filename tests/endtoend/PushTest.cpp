#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "tests/endtoend/Service.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using testing::HasSubstr;
using tests::ProgramResult;
using tests::RunOvsync;
using tests::Service;
using tests::Text;

class PushTest : public testing::Test {
protected:
    void ExpectPush(int exitCode, const QByteArray& output) {
        const ProgramResult result = RunOvsync({Text("push"), _folder.path(), _service.Url()});
        EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
        EXPECT_THAT((result.output + result.errors).toStdString(), HasSubstr(output.toStdString()));
    }

    void ExpectPull(int exitCode, const QByteArray& output) {
        const ProgramResult result = RunOvsync({Text("pull"), _service.Url(), _folder.path()});
        EXPECT_EQ(result.exitCode, exitCode) << result.errors.toStdString();
        EXPECT_THAT((result.output + result.errors).toStdString(), HasSubstr(output.toStdString()));
    }

    void Write(const char* path, const QByteArray& content) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(_folder.filePath(Text(path))).path()));
        QFile file(_folder.filePath(Text(path)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path;
        ASSERT_EQ(file.write(content), content.size());
    }

    Service _service;
    QTemporaryDir _folder;
};

TEST_F(PushTest, TheDateAndTheExecutableBitComeBackWithAPull) {
    const QDateTime date(QDate(2020, 2, 29), QTime(12, 34, 56), Qt::UTC);
    const auto age = [&](const char* path) {
        QFile file(_folder.filePath(Text(path)));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(date, QFileDevice::FileModificationTime));
    };
    QTemporaryDir other;
    const auto pullToOther = [&] { ASSERT_EQ(RunOvsync({Text("pull"), _service.Url(), other.path()}).exitCode, 0); };
    const auto isExecutable = [&](const char* path) {
        return QFileInfo(other.filePath(Text(path))).permission(QFile::ExeOwner);
    };
    Write("run", "#!/bin/sh");
    Write("text", "text");
    ASSERT_TRUE(QFile::setPermissions(_folder.filePath(Text("run")),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup));
    age("run");
    ExpectPush(0, "2 sent");
    ExpectPull(0, "Nothing to do");
    pullToOther();
    EXPECT_EQ(QFileInfo(other.filePath(Text("run"))).lastModified().toUTC(), date);
    EXPECT_TRUE(isExecutable("run"));
    EXPECT_FALSE(isExecutable("text"));
    // A file that is replaced keeps the rest of its permissions.
    ASSERT_TRUE(
        QFile::setPermissions(other.filePath(Text("run")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    Write("run", "no longer");
    ASSERT_TRUE(QFile::setPermissions(_folder.filePath(Text("run")), QFile::ReadOwner | QFile::WriteOwner));
    ExpectPush(0, "1 sent");
    pullToOther();
    EXPECT_FALSE(isExecutable("run"));
    EXPECT_FALSE(QFileInfo(other.filePath(Text("run"))).permission(QFile::ReadGroup));
}

TEST_F(PushTest, WhatIsPushedIsNotPulledAgainAndCanBeChangedFromBothSides) {
    Write("f/\xC3\xA9 %#.txt", "1");
    Write("big", QByteArray(3000000, 'x'));
    Write("empty", "");
    ExpectPush(0, "3 sent, 1 folder made on the service (2.9 MiB)");
    ExpectPull(0, "Nothing to do");
    ExpectPush(0, "Nothing to do");
    Write("f/\xC3\xA9 %#.txt", "22");
    ExpectPush(0, "sent f/\xC3\xA9 %#.txt\n");
    ExpectPull(0, "Nothing to do");
    _service.AddFile(Text("f/\xC3\xA9 %#.txt"), "333");
    ExpectPush(0, "newer there f/\xC3\xA9 %#.txt\n");
    ExpectPull(0, "updated f/\xC3\xA9 %#.txt\n");
    ExpectPush(0, "Nothing to do");
}

TEST_F(PushTest, AConflictIsLeftToThePeople) {
    Write("a", "1");
    ExpectPush(0, "sent a\n");
    Write("a", "mine");
    _service.AddFile(Text("a"), "theirs");
    ExpectPush(1, "conflict a: it changed here and on the service");
    ExpectPull(1, "whose version is in \"a (from the service, ");
    ExpectPush(1, "conflict a: it changed here and on the service");
    const QStringList copies = QDir(_folder.path()).entryList({Text("a (*")});
    ASSERT_EQ(copies.size(), 1);
    ASSERT_TRUE(QFile::remove(_folder.filePath(copies.first())));
    ExpectPush(0, "sent a\n");
    ExpectPull(0, "Nothing to do");
}

TEST_F(PushTest, TheFolderIsMadeAndNotTheOneAboveIt) {
    Write("a", "1");
    const auto push = [this](const char* path) {
        return RunOvsync({Text("push"), _folder.path(), _service.Url() + Text(path)});
    };
    EXPECT_EQ(push("new/folder/").exitCode, 1);
    EXPECT_FALSE(_service.HasFile(Text("new")));
    const ProgramResult result = push("new/");
    EXPECT_EQ(result.exitCode, 0) << result.errors.toStdString();
    EXPECT_TRUE(_service.HasFile(Text("new/a")));
}

TEST_F(PushTest, AFormIsNotWrittenInto) {
    _service.AddFile(Text("form/inside"), "1");
    _service.MakeForm(Text("form/"));
    ExpectPull(0, "Nothing to do");
    Write("form/mine", "2");
    ExpectPush(1, "refused form: the service has something of this name that it does not list");
    EXPECT_FALSE(_service.HasFile(Text("form/mine")));
}

}  // namespace
