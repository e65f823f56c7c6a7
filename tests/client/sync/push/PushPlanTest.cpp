#include "client/sync/push/PushPlan.h"

#include <gmock/gmock.h>

#include "client/sync/pass/SyncPass.h"
#include "tests/client/sync/pass/SyncTest.h"
#include "tests/fakes/Printers.h"

namespace {

using ovsync::local::LocalSnapshot;
using ovsync::pass::FileComparison;
using ovsync::pass::RecordMaker;
using ovsync::pass::SyncPass;
using ovsync::plan::Direction;
using ovsync::plan::FileViews;
using ovsync::push::PushPlan;
using ovsync::report::SyncEvent;
using ovsync::store::RecordDatabase;
using tests::Text;
using Files = std::map<QString, QByteArray>;

class PushPlanTest : public tests::SyncTest {
protected:
    /// Sees to it that nothing is done.
    PushPlan::Work Plan() {
        const Files before = service.Contents();
        events.clear();
        RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
        const QStringList files = records.FilePaths();
        const QStringList folders = records.Folders();
        const ovsync::pass::ServiceFolder serviceFolder = service.Folder(folder.path());
        SyncPass pass(serviceFolder, tree, records, options, Observer());
        pass.CheckFolder();
        pass.Prepare();
        const LocalSnapshot snapshot = pass.Look();
        const SyncPass::Listing listing = pass.List(QDateTime(), snapshot);
        const RecordMaker maker(serviceFolder, listing.at);
        const FileComparison comparison(pass.Sides(), maker);
        const FileViews views(pass.Sides(), comparison, *listing.tree, snapshot, pass.Report(), Direction::Push);
        PushPlan::Work work = PushPlan(pass.Sides(), views, maker, *listing.tree, snapshot).Find();
        EXPECT_EQ(service.Contents(), before);
        EXPECT_EQ(service.Count("MKCOL"), 0);
        EXPECT_EQ(records.FilePaths(), files);
        EXPECT_EQ(records.Folders(), folders);
        EXPECT_TRUE(events.isEmpty());
        return work;
    }
};

TEST_F(PushPlanTest, WhatIsNewIsFoundAndNotSent) {
    service.Put(Text("same"), "1");
    service.Put(Text("other"), "2");
    Write("same", "1");
    Write("other", "mine");
    Write("f/g/new", "1");
    const PushPlan::Work work = Plan();
    EXPECT_EQ(work.folders, QStringList({Text("f"), Text("f/g")}));
    ASSERT_EQ(work.orders.size(), 1U);
    EXPECT_EQ(work.orders.front().path, Text("f/g/new"));
    ASSERT_EQ(work.records.files.size(), 1);
    EXPECT_EQ(work.records.files.first().path, Text("same"));
    ASSERT_EQ(work.events.size(), 1);
    EXPECT_EQ(work.events.first().kind, SyncEvent::Kind::Conflict);
    EXPECT_EQ(work.events.first().path, Text("other"));
}

TEST_F(PushPlanTest, WhatIsGoneOnBothSidesIsOnlyToBeForgotten) {
    service.Put(Text("f/a"), "1");
    service.Put(Text("stays"), "1");
    Pull();
    service.Remove(Text("f"));
    ASSERT_TRUE(QDir(Path("f")).removeRecursively());
    const PushPlan::Work work = Plan();
    EXPECT_EQ(work.records.forgottenFiles, QStringList(Text("f/a")));
    EXPECT_EQ(work.records.forgottenFolders, QStringList(Text("f")));
    EXPECT_TRUE(work.orders.empty());
    EXPECT_TRUE(work.events.isEmpty());
}

TEST_F(PushPlanTest, NothingIsOrderedIntoAFolderThatIsAFileThere) {
    service.Put(Text("f"), "1");
    Write("f/g/a", "1");
    const PushPlan::Work work = Plan();
    EXPECT_TRUE(work.folders.isEmpty());
    EXPECT_TRUE(work.orders.empty());
    ASSERT_EQ(work.events.size(), 1);
    EXPECT_EQ(work.events.first().kind, SyncEvent::Kind::Refused);
}

}  // namespace
