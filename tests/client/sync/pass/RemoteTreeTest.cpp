#include "client/sync/pass/RemoteTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/sync/pass/ServiceFolder.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::local::Exclusion;
using ovsync::pass::RemoteTree;
using ovsync::pass::ServiceFolder;
using ovsync::pass::WrongFolder;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using tests::Text;

class RemoteTreeTest : public testing::Test {
protected:
    RemoteTreeTest() { service.folder.serverPath = Text("S"); }

    void AddFile(const QString& serverPath, const QString& name) {
        FileConfiguration file;
        file.serverPath = serverPath;
        file.name = name;
        files.append(file);
    }
    void AddFile(const char* serverPath) { AddFile(Text(serverPath), Text(serverPath).section(QLatin1Char('/'), -1)); }
    void AddFolder(const char* serverPath, const char* name) {
        FolderConfiguration folder;
        folder.serverPath = Text(serverPath);
        folder.name = Text(name);
        folders.append(folder);
    }

    RemoteTree Tree() { return RemoteTree(service, folders, files, Exclusion()); }

    void ExpectNothingBut(int refused) {
        const RemoteTree tree = Tree();
        EXPECT_TRUE(tree.AllFiles().isEmpty()) << tree.AllFiles().firstKey().toStdString();
        EXPECT_EQ(tree.Refused().size(), refused);
    }

    ServiceFolder service;
    QVector<FolderConfiguration> folders;
    QVector<FileConfiguration> files;
};

TEST_F(RemoteTreeTest, PathsAreThoseBelowTheFolder) {
    AddFolder("S/f", "f");
    AddFile("S/f/a");
    AddFile("S/b");
    EXPECT_EQ(Tree().AllFiles().keys(), QStringList({Text("b"), Text("f/a")}));
    EXPECT_TRUE(Tree().HasFolder(Text("f")));
    EXPECT_TRUE(Tree().HasFolder(QString()));
    EXPECT_FALSE(Tree().HasFolder(Text("g")));
}

TEST_F(RemoteTreeTest, TheRootOfAServiceHasNoPrefix) {
    service.folder.serverPath = QString();
    AddFile("b");
    EXPECT_EQ(Tree().AllFiles().keys(), QStringList(Text("b")));
}

TEST_F(RemoteTreeTest, NothingLeadsOutOfTheFolder) {
    for (const char* path : {"S/..", "S/../x", "S/f/../../x", "S/./x", "S//x", "S//etc/x", "/etc/x", "T/x", "Sx/y",
                             "S/.ovsync", "S/.ovsync/records.db", "S/f/.OVSYNC", "S/x.{SyncTemp}", "S/"}) {
        AddFolder("S/f", "f");
        AddFile(path);
        SCOPED_TRACE(path);
        ExpectNothingBut(1);
        files.clear();
        folders.clear();
    }
}

TEST_F(RemoteTreeTest, ANameWithANulOrTooLongIsRefused) {
    AddFile(Text("S/a") + QChar(0) + Text("b"), Text("a") + QChar(0) + Text("b"));
    AddFile(Text("S/") + QString(256, QLatin1Char('x')), QString(256, QLatin1Char('x')));
    AddFile("S/\xFF");
    ExpectNothingBut(3);
}

TEST_F(RemoteTreeTest, AnEncodedSlashDoesNotMakeAFolder) {
    AddFolder("S/x", "x");
    AddFile(Text("S/x/y"), Text("x/y"));
    ExpectNothingBut(1);
    // As a folder, with a file in it, beside a folder of that path.
    files.clear();
    AddFolder("S/x/y", "x%2Fy");
    AddFile("S/x/y/a");
    ExpectNothingBut(1);
    AddFolder("S/x/y", "y");
    ExpectNothingBut(1);
    EXPECT_TRUE(Tree().IsRefused(Text("x/y/a")));
    EXPECT_FALSE(Tree().IsRefused(Text("x")));
}

TEST_F(RemoteTreeTest, WhatIsListedTwiceIsRefused) {
    AddFile("S/a");
    AddFile("S/a");
    ExpectNothingBut(1);
    AddFolder("S/a", "a");
    ExpectNothingBut(1);
    EXPECT_FALSE(Tree().HasFolder(Text("a")));
}

TEST_F(RemoteTreeTest, WhatIsListedWithoutTheFolderThatItLiesInIsRefused) {
    AddFolder("S/form/f", "f");
    AddFile("S/form/f/a");
    AddFile("S/form/b");
    ExpectNothingBut(2);
    EXPECT_TRUE(Tree().AllFolders().empty());
}

TEST_F(RemoteTreeTest, AFileCannotBeSynced) {
    AddFile("S");
    EXPECT_THROW(Tree(), WrongFolder);
}

TEST_F(RemoteTreeTest, NamesThatTheDiskTakesForOneAreAllRefused) {
    AddFolder("S/f", "f");
    AddFolder("S/F", "F");
    AddFile("S/f/a");
    AddFile("S/\xC3\xA9");
    AddFile("S/e\xCC\x81");
    AddFile("S/b");
    AddFile("S/c");
    RemoteTree tree = Tree();
    tree.RefuseClashes({Text("B"), Text("c")}, false, false);
    EXPECT_EQ(tree.AllFiles().keys(), QStringList(Text("c")));
    EXPECT_TRUE(tree.AllFolders().empty());
    RemoteTree telling = Tree();
    telling.RefuseClashes({Text("B"), Text("c")}, true, true);
    EXPECT_EQ(telling.AllFiles().size(), 5);
}

}  // namespace
