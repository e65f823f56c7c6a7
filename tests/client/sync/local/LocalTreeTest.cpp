#include "client/sync/local/LocalTree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "client/sync/local/LocalError.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::local::LocalEntry;
using ovsync::local::LocalError;
using ovsync::local::LocalTree;
using tests::Text;

class LocalTreeTest : public testing::Test {
protected:
    LocalTreeTest() : tree(_folder.path()) {}

    QString Path(const char* path) const { return _folder.filePath(Text(path)); }

    void Make(const char* path, const QByteArray& content) {
        const auto file = tree.Create(Text(path));
        file->Write(content.constData(), static_cast<size_t>(content.size()));
    }

    QByteArray Read(const char* path) {
        const auto file = tree.Open(Text(path));
        char bytes[100];
        return QByteArray(bytes, static_cast<int>(file->Read(bytes, sizeof bytes)));
    }

private:
    QTemporaryDir _folder;

protected:
    LocalTree tree;
};

TEST_F(LocalTreeTest, FilesAreWrittenReadListedAndRemoved) {
    tree.MakeFolder(Text("f"));
    Make("f/\xC3\xA9", "abc");
    EXPECT_EQ(Read("f/\xC3\xA9"), QByteArray("abc"));
    ASSERT_EQ(tree.List(Text("f")).size(), 1);
    EXPECT_EQ(tree.List(Text("f")).first().name, Text("\xC3\xA9"));
    EXPECT_EQ(tree.List(QString()).first().kind, LocalEntry::Kind::Folder);
    EXPECT_FALSE(tree.RemoveFolder(Text("f")));
    tree.Remove(Text("f/\xC3\xA9"));
    tree.Remove(Text("f/\xC3\xA9"));
    EXPECT_TRUE(tree.RemoveFolder(Text("f")));
    EXPECT_FALSE(tree.Look(Text("f")));
}

TEST_F(LocalTreeTest, AByteOrderMarkBelongsToTheName) {
    const QString name = QChar(QChar::ByteOrderMark) + Text("b");
    tree.Create(name);
    const auto entries = tree.List(QString());
    ASSERT_EQ(entries.size(), 1);
    EXPECT_TRUE(entries.first().isUtf8);
    EXPECT_EQ(entries.first().name, name);
}

TEST_F(LocalTreeTest, NothingIsMadeOverAnExistingFile) {
    Make("a", "1");
    Make("b", "2");
    EXPECT_THROW(tree.Create(Text("a")), LocalError);
    EXPECT_FALSE(tree.Move(Text("b"), Text("a")));
    EXPECT_EQ(Read("a"), QByteArray("1"));
    EXPECT_TRUE(tree.Move(Text("b"), Text("c")));
    EXPECT_TRUE(tree.Swap(Text("a"), Text("c")));
    EXPECT_EQ(Read("a"), QByteArray("2"));
}

TEST_F(LocalTreeTest, LinksAreNeverFollowed) {
    const QTemporaryDir elsewhere;
    QFile outside(elsewhere.filePath(Text("x")));
    ASSERT_TRUE(outside.open(QIODevice::WriteOnly));
    ASSERT_TRUE(QFile::link(elsewhere.path(), Path("link")));
    ASSERT_TRUE(QFile::link(outside.fileName(), Path("file")));
    Make("a", "1");
    EXPECT_EQ(tree.Look(Text("link"))->kind, LocalEntry::Kind::Other);
    EXPECT_FALSE(tree.Look(Text("link/x")));
    EXPECT_THROW(tree.List(Text("link")), LocalError);
    EXPECT_THROW(tree.Open(Text("link/x")), LocalError);
    EXPECT_THROW(tree.Open(Text("file")), LocalError);
    EXPECT_THROW(tree.Create(Text("link/y")), LocalError);
    EXPECT_THROW(tree.MakeFolder(Text("link/y")), LocalError);
    EXPECT_THROW(tree.Move(Text("a"), Text("link/y")), LocalError);
    EXPECT_THROW(tree.Swap(Text("a"), Text("link/x")), LocalError);
    EXPECT_THROW(tree.Remove(Text("link/x")), LocalError);
    EXPECT_THROW(tree.RemoveFolder(Text("link")), LocalError);
    EXPECT_EQ(QDir(elsewhere.path()).entryList(QDir::Files), QStringList(Text("x")));
}

TEST_F(LocalTreeTest, NoPathLeadsOut) {
    Make("a", "1");
    for (const char* path : {"..", "../x", "f/../../x", "."}) {
        EXPECT_THROW(tree.Look(Text(path)), LocalError) << path;
        EXPECT_THROW(tree.Create(Text(path)), LocalError) << path;
        EXPECT_THROW(tree.Move(Text("a"), Text(path)), LocalError) << path;
    }
    EXPECT_THROW(tree.Look(Text("a") + QChar(0)), LocalError);
}

TEST_F(LocalTreeTest, WhatIsNoFileIsNotRead) {
    ASSERT_EQ(mkfifo(Path("pipe").toUtf8().constData(), 0600), 0);
    EXPECT_EQ(tree.Look(Text("pipe"))->kind, LocalEntry::Kind::Other);
    EXPECT_THROW(tree.Open(Text("pipe")), LocalError);
    tree.MakeFolder(Text("f"));
    EXPECT_THROW(tree.Open(Text("f")), LocalError);
}

TEST_F(LocalTreeTest, TimesAreSetToTheMillisecondBefore1970Too) {
    for (const qint64 time :
         {Q_INT64_C(1700000000123), Q_INT64_C(0), Q_INT64_C(-1), Q_INT64_C(-1000), Q_INT64_C(-1500)}) {
        const auto file = tree.Create(Text("a"));
        file->SetModified(QDateTime::fromMSecsSinceEpoch(time, Qt::UTC));
        EXPECT_EQ(file->Look().modified, time * 1000000);
        file->SetModified(QDateTime());
        EXPECT_EQ(file->Look().modified, time * 1000000);
        tree.Remove(Text("a"));
    }
}

TEST_F(LocalTreeTest, AnErrorNamesTheFile) {
    try {
        tree.Open(Text("f/a"));
        FAIL();
    } catch (const LocalError& e) {
        EXPECT_EQ(e.Message(), Path("f/a") + Text(": No such file or directory"));
        EXPECT_EQ(e.Code(), ENOENT);
    }
}

TEST_F(LocalTreeTest, TheDiskIsTriedOutInTheHiddenFolder) {
    tree.MakeFolder(Text(".ovsync"));
    const bool tellsCaseApart = tree.TellsCaseApart();
    tree.TellsUnicodeFormsApart();
    EXPECT_TRUE(tree.List(Text(".ovsync")).isEmpty());
    Make("x", "1");
    EXPECT_EQ(tellsCaseApart, !tree.Look(Text("X")).has_value());
}

}  // namespace
