#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include "client/sync/local/Installer.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pull/PullPlan.h"

namespace ovsync {
namespace pull {

/// Makes folders here, and deletes what is here: tells of it, records it, and brings the snapshot up to date. For one
/// pass. Not thread-safe.
class LocalChanges {
public:
    /// The arguments outlive this object.
    LocalChanges(const pass::PassSides& sides, local::Installer& installer, pass::PassReport& report,
                 local::LocalSnapshot& snapshot)
        : _tree(sides.tree), _records(sides.records), _installer(installer), _report(report), _snapshot(snapshot) {}

    /// A folder comes before those in it, which are not made when it cannot be.
    void MakeFolders(const QStringList& paths);
    /// Throws Cancelled.
    void Delete(const PullPlan::Gone& gone);

private:
    void _DeleteFiles(const QVector<store::Placement>& files);
    void _DeleteFolders(const QStringList& folders);

    local::ILocalTree& _tree;
    store::RecordDatabase& _records;
    local::Installer& _installer;
    pass::PassReport& _report;
    local::LocalSnapshot& _snapshot;
};

}  // namespace pull
}  // namespace ovsync
