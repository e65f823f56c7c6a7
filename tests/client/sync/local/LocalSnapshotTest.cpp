#include "client/sync/local/LocalSnapshot.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>
#include <cerrno>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/LocalTree.h"
#include "tests/client/sync/local/FaultyTree.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::local::Exclusion;
using ovsync::local::LocalError;
using ovsync::local::LocalSnapshot;
using tests::Text;

/// Many folders with one in each, so that several threads look through them.
class LocalSnapshotTest : public testing::Test {
protected:
    LocalSnapshotTest() {
        for (int i = 0; i < Count; ++i) {
            QDir(folder.path()).mkpath(Name(i) + Text("/below"));
        }
    }

    static QString Name(int i) { return QString::number(i); }

    static constexpr int Count = 170;
    QTemporaryDir folder;
    ovsync::local::LocalTree disk{folder.path()};
    tests::FaultyTree tree{disk};
};

TEST_F(LocalSnapshotTest, HasAllOfManyFolders) {
    const LocalSnapshot snapshot = LocalSnapshot::Of(tree, Exclusion());
    EXPECT_EQ(snapshot.entries.size(), 2 * Count);
    for (int i = 0; i < Count; ++i) {
        EXPECT_TRUE(snapshot.HasFolder(Name(i) + Text("/below"))) << i;
    }
}

TEST_F(LocalSnapshotTest, NamesEachFolderThatCannotBeRead) {
    tree.before = [](const char* operation, const QString& path) {
        if (operation == std::string("List") && path.startsWith(Text("1")) && !path.contains(Text("/"))) {
            throw LocalError(path, EACCES);
        }
    };
    QDir(folder.path()).mkpath(Text("2/.ovsync"));
    const LocalSnapshot snapshot = LocalSnapshot::Of(tree, Exclusion());
    QSet<QString> closed;
    for (const auto& event : snapshot.closed) {
        closed.insert(event.path);
    }
    QSet<QString> expected{Text("2")};
    for (int i = 0; i < Count; ++i) {
        if (Name(i).startsWith(Text("1"))) {
            expected.insert(Name(i));
        }
    }
    EXPECT_EQ(closed, expected);
    EXPECT_EQ(snapshot.closed.size(), expected.size());
    EXPECT_EQ(snapshot.entries.size(), 2 * Count - expected.size());
}

TEST_F(LocalSnapshotTest, EndsWhereTheDiskFails) {
    for (int i = 0; i < Count; i += 13) {
        tree.before = [i](const char* operation, const QString& path) {
            if (operation == std::string("List") && path == Name(i)) {
                throw LocalError(path, EIO);
            }
        };
        EXPECT_THROW(LocalSnapshot::Of(tree, Exclusion()), LocalError) << i;
    }
}

TEST_F(LocalSnapshotTest, AFolderThatGoesMeanwhileHasNothingInIt) {
    tree.before = [this](const char* operation, const QString& path) {
        if (operation == std::string("List") && path == Text("7")) {
            QDir(folder.path() + Text("/7")).removeRecursively();
        }
    };
    const LocalSnapshot snapshot = LocalSnapshot::Of(tree, Exclusion());
    EXPECT_EQ(snapshot.entries.size(), 2 * Count - 1);
    EXPECT_TRUE(snapshot.closed.isEmpty());
}

}  // namespace
