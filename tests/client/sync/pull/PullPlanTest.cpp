#include "client/sync/pull/PullPlan.h"

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
using ovsync::pull::PullOrder;
using ovsync::pull::PullPlan;
using ovsync::report::SyncEvent;
using ovsync::store::FileRecord;
using ovsync::store::RecordDatabase;
using tests::Text;
using Files = std::map<QString, QByteArray>;

class PullPlanTest : public tests::SyncTest {
protected:
    /// Lets `look` see a plan, and then sees to it that nothing was done.
    void Plan(const std::function<void(PullPlan& plan)>& look) {
        const Files before = Contents();
        events.clear();
        RecordDatabase records(folder.path(), RecordDatabase::Access::Change);
        const QStringList files = records.FilePaths();
        const QStringList folders = records.Folders();
        const ovsync::pass::ServiceFolder serviceFolder = service.Folder(folder.path());
        SyncPass pass(serviceFolder, tree, records, options, Observer());
        pass.CheckFolder();
        pass.Prepare();
        LocalSnapshot snapshot = pass.Look();
        const SyncPass::Listing listing = pass.List(QDateTime(), snapshot);
        const RecordMaker maker(serviceFolder, listing.at);
        const FileComparison comparison(pass.Sides(), maker);
        const FileViews views(pass.Sides(), comparison, *listing.tree, snapshot, pass.Report(), Direction::Pull);
        PullPlan plan(pass.Sides(), views, maker, *listing.tree, snapshot);
        look(plan);
        EXPECT_EQ(Contents(), before);
        EXPECT_EQ(records.FilePaths(), files);
        EXPECT_EQ(records.Folders(), folders);
        EXPECT_TRUE(events.isEmpty());
    }

    static QStringList Paths(const std::deque<PullOrder>& orders) {
        QStringList paths;
        for (const PullOrder& order : orders) {
            paths.append(order.path);
        }
        return paths;
    }
};

TEST_F(PullPlanTest, WhatIsGoneIsFoundAndStays) {
    for (const char* path : {"changed", "f/gone", "lost", "place", "stays"}) {
        service.Put(Text(path), "1");
    }
    Pull();
    for (const char* path : {"changed", "f", "lost", "place"}) {
        service.Remove(Text(path));
    }
    service.Put(Text("place/x"), "1");
    Write("changed", "mine");
    Remove("lost");
    Plan([](PullPlan& plan) {
        const PullPlan::Deletions gone = plan.FindGone();
        ASSERT_EQ(gone.inTheWay.files.size(), 1);
        EXPECT_EQ(gone.inTheWay.files.first().record.path, Text("place"));
        ASSERT_EQ(gone.others.files.size(), 1);
        EXPECT_EQ(gone.others.files.first().record.path, Text("f/gone"));
        EXPECT_EQ(gone.others.folders, QStringList(Text("f")));
        EXPECT_EQ(gone.records.forgottenFiles, QStringList(Text("lost")));
        ASSERT_EQ(gone.events.size(), 1);
        EXPECT_EQ(gone.events.first().kind, SyncEvent::Kind::Kept);
        EXPECT_EQ(gone.events.first().path, Text("changed"));
    });
}

TEST_F(PullPlanTest, FoldersAreFoundAndNotMade) {
    service.Put(Text("here/x"), "1");
    service.Put(Text("new/below/x"), "1");
    service.Put(Text("taken/below/x"), "1");
    Write("here/own", "1");
    Write("taken", "1");
    Plan([](PullPlan& plan) {
        const PullPlan::Folders folders = plan.FindFolders({});
        EXPECT_EQ(folders.missing, QStringList({Text("new"), Text("new/below")}));
        EXPECT_EQ(folders.records.folders, QStringList(Text("here")));
        ASSERT_EQ(folders.events.size(), 1);
        EXPECT_EQ(folders.events.first().path, Text("taken"));
        // What lies in a folder that is not here waits for it.
        EXPECT_EQ(Paths(plan.FindFetches().orders), QStringList(Text("here/x")));
    });
}

TEST_F(PullPlanTest, WhatIsHereAlreadyIsOnlyToBeRecorded) {
    service.Put(Text("same"), "1");
    service.Put(Text("other"), "2");
    Write("same", "1");
    Write("other", "mine");
    Plan([](PullPlan& plan) {
        const PullPlan::Fetches fetches = plan.FindFetches();
        ASSERT_EQ(fetches.orders.size(), 1U);
        EXPECT_EQ(fetches.orders.front().path, Text("other"));
        EXPECT_EQ(fetches.orders.front().target, PullOrder::Target::Beside);
        ASSERT_EQ(fetches.records.files.size(), 1);
        const FileRecord& record = fetches.records.files.first();
        EXPECT_EQ(record.path, Text("same"));
        EXPECT_EQ(record.local.size, 1);
        EXPECT_EQ(record.contentMd5, Text("c4ca4238a0b923820dcc509a6f75849b"));
    });
}

}  // namespace
