#include "client/sync/local/DryRunTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/LocalTree.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::local::DryRunTree;
using ovsync::local::LocalEntry;
using ovsync::local::LocalError;
using ovsync::local::LocalTree;
using ovsync::local::NamedLocalEntry;
using tests::Text;

/// A folder with the files "a" and "f/b".
class DryRunTreeTest : public testing::Test {
protected:
    DryRunTreeTest() : _disk(_folder.path()), tree(_disk) {
        _disk.MakeFolder(Text("f"));
        for (const char* path : {"a", "f/b"}) {
            _disk.Create(Text(path))->Write(path, qstrlen(path));
        }
    }

    ~DryRunTreeTest() override {
        EXPECT_EQ(Names(_disk, ""), QStringList({Text("a"), Text("f")}));
        EXPECT_EQ(Names(_disk, "f"), QStringList(Text("b")));
    }

    QStringList Names(const char* folder) { return Names(tree, folder); }

    QByteArray Read(const char* path) {
        char bytes[100];
        return QByteArray(bytes, static_cast<int>(tree.Open(Text(path))->Read(bytes, sizeof bytes)));
    }

private:
    static QStringList Names(ovsync::local::ILocalTree& tree, const char* folder) {
        QStringList names;
        for (const NamedLocalEntry& entry : tree.List(Text(folder))) {
            names.append(entry.name);
        }
        names.sort();
        return names;
    }

    QTemporaryDir _folder;
    LocalTree _disk;

protected:
    DryRunTree tree;
};

TEST_F(DryRunTreeTest, AFileThatIsMovedIsWhereItWasMovedToAndReadWhereItIs) {
    const quint64 inode = tree.Look(Text("a"))->fingerprint.inode;
    EXPECT_TRUE(tree.Move(Text("a"), Text("f/c")));
    EXPECT_TRUE(tree.Move(Text("f/c"), Text("f/d")));
    EXPECT_EQ(Names(""), QStringList(Text("f")));
    EXPECT_EQ(Names("f"), QStringList({Text("b"), Text("d")}));
    EXPECT_FALSE(tree.Look(Text("a")));
    EXPECT_EQ(tree.Look(Text("f/d"))->fingerprint.inode, inode);
    EXPECT_EQ(Read("f/d"), QByteArray("a"));
    EXPECT_EQ(Read("f/b"), QByteArray("f/b"));
    EXPECT_THROW(tree.Open(Text("a")), LocalError);
    EXPECT_THROW(tree.Move(Text("a"), Text("g")), LocalError);
}

TEST_F(DryRunTreeTest, AFolderThatIsMovedTakesAlongWhatIsInIt) {
    EXPECT_TRUE(tree.Move(Text("f"), Text("g")));
    EXPECT_EQ(Names(""), QStringList({Text("a"), Text("g")}));
    EXPECT_EQ(Names("g"), QStringList(Text("b")));
    EXPECT_EQ(Read("g/b"), QByteArray("f/b"));
    EXPECT_FALSE(tree.Look(Text("f/b")));
    EXPECT_THROW(tree.List(Text("f")), LocalError);
}

TEST_F(DryRunTreeTest, NothingIsMadeOrMovedOverWhatIsThere) {
    EXPECT_THROW(tree.MakeFolder(Text("a")), LocalError);
    EXPECT_FALSE(tree.Move(Text("a"), Text("f/b")));
    EXPECT_FALSE(tree.Swap(Text("a"), Text("f/b")));
    EXPECT_EQ(Read("f/b"), QByteArray("f/b"));
}

TEST_F(DryRunTreeTest, AFolderIsRemovedWhenNothingIsLeftInIt) {
    EXPECT_FALSE(tree.RemoveFolder(Text("f")));
    tree.Remove(Text("f/b"));
    EXPECT_EQ(Names("f"), QStringList());
    EXPECT_TRUE(tree.RemoveFolder(Text("f")));
    EXPECT_EQ(Names(""), QStringList(Text("a")));
    EXPECT_THROW(tree.RemoveFolder(Text("f")), LocalError);
}

TEST_F(DryRunTreeTest, AFolderThatIsMadeHoldsWhatIsMovedIntoIt) {
    tree.Remove(Text("a"));
    tree.MakeFolder(Text("a"));
    EXPECT_EQ(tree.Look(Text("a"))->kind, LocalEntry::Kind::Folder);
    EXPECT_EQ(Names("a"), QStringList());
    EXPECT_TRUE(tree.Move(Text("f/b"), Text("a/b")));
    EXPECT_EQ(Names("a"), QStringList(Text("b")));
    EXPECT_FALSE(tree.RemoveFolder(Text("a")));
    tree.SyncFolder(Text("a"));
}

TEST_F(DryRunTreeTest, NoFileIsCreatedAndNoNameTriedOut) {
    EXPECT_THROW(tree.Create(Text("new")), LocalError);
    EXPECT_TRUE(tree.TellsCaseApart());
    EXPECT_TRUE(tree.TellsUnicodeFormsApart());
}

}  // namespace
