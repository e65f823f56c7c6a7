#include "client/user/WholeFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <stdexcept>
#include <thread>
#include <vector>

#include "host/core/SyncException.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::user::EditWholeFile;
using ovsync::user::ReadWholeFile;
using tests::Text;

class WholeFileTest : public testing::Test {
protected:
    static unsigned ModeOf(const QString& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.toUtf8().constData(), &status), 0);
        return status.st_mode & 0777U;
    }
    QStringList Names() const { return QDir(_folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System); }

    const QTemporaryDir _folder;
    const QString _path = _folder.filePath(Text("file"));
};

TEST_F(WholeFileTest, IsMadeWithTheFoldersAboveItForThisUserAlone) {
    const QString path = _folder.filePath(Text("a/b/file"));
    EditWholeFile(path, 0600, [](const QByteArray& before) {
        EXPECT_EQ(before, "");
        return QByteArray("one");
    });
    EXPECT_EQ(ReadWholeFile(path), "one");
    EXPECT_EQ(ModeOf(path), 0600U);
    EXPECT_EQ(ModeOf(_folder.filePath(Text("a"))), 0700U);
}

TEST_F(WholeFileTest, KeepsItsModeAndLeavesNothingBeside) {
    EditWholeFile(_path, 0644, [](const QByteArray&) { return QByteArray("one"); });
    ASSERT_EQ(chmod(_path.toUtf8().constData(), 0640), 0);
    EditWholeFile(_path, 0644, [](const QByteArray& before) { return before + " two"; });
    EXPECT_EQ(ReadWholeFile(_path), "one two");
    EXPECT_EQ(ModeOf(_path), 0640U);
    EXPECT_EQ(Names(), QStringList(Text("file")));
}

TEST_F(WholeFileTest, ALinkStaysOne) {
    const QTemporaryDir elsewhere;
    const QString real = elsewhere.filePath(Text("real"));
    EditWholeFile(real, 0644, [](const QByteArray&) { return QByteArray("one"); });
    ASSERT_TRUE(QFile::link(real, _path));
    EditWholeFile(_path, 0644, [](const QByteArray&) { return QByteArray("two"); });
    EXPECT_TRUE(QFileInfo(_path).isSymLink());
    EXPECT_EQ(ReadWholeFile(real), "two");
}

TEST_F(WholeFileTest, AnEditThatThrowsChangesNothing) {
    EditWholeFile(_path, 0644, [](const QByteArray&) { return QByteArray("one"); });
    EXPECT_THROW(EditWholeFile(_path, 0644, [](const QByteArray&) -> QByteArray { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_EQ(ReadWholeFile(_path), "one");
    EXPECT_EQ(Names(), QStringList(Text("file")));
}

TEST_F(WholeFileTest, AnotherFileOfTheSameFolderMayBeEditedBeforeItTakesItsPlace) {
    const QString other = _folder.filePath(Text("other"));
    const auto edit = [](const QByteArray& before) { return before + 'x'; };
    EditWholeFile(_path, 0644, edit, [&] {
        EXPECT_EQ(ReadWholeFile(_path), "");
        EditWholeFile(other, 0644, edit);
    });
    EXPECT_EQ(ReadWholeFile(_path), "x");
    EXPECT_EQ(ReadWholeFile(other), "x");
    EXPECT_THROW(EditWholeFile(_path, 0644, edit, [] { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ(ReadWholeFile(_path), "x");
    EXPECT_EQ(Names(), QStringList({Text("file"), Text("other")}));
}

TEST_F(WholeFileTest, EditsAtTheSameTimeAllCount) {
    const int count = 8;
    std::vector<std::thread> editors;
    editors.reserve(count);
    for (int i = 0; i < count; ++i) {
        editors.emplace_back([this] {
            for (int j = 0; j < 20; ++j) {
                EditWholeFile(_path, 0644, [](const QByteArray& before) { return before + 'x'; });
            }
        });
    }
    for (std::thread& editor : editors) {
        editor.join();
    }
    EXPECT_EQ(ReadWholeFile(_path).size(), 160);
}

TEST_F(WholeFileTest, WhatCannotBeReadIsNamed) {
    EXPECT_EQ(ReadWholeFile(_path), "");
    ASSERT_TRUE(QDir().mkpath(_path));
    EXPECT_THROW(ReadWholeFile(_path), sync::core::SyncException);
    EXPECT_THROW(EditWholeFile(_path, 0644, [](const QByteArray&) { return QByteArray("one"); }),
                 sync::core::SyncException);
}

}  // namespace
