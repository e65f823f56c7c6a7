#pragma once

#include <QDateTime>
#include <functional>
#include <optional>

#include "client/sync/local/DryRunTree.h"
#include "client/sync/local/Installer.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/PassReport.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pass/RemoteTree.h"

namespace ovsync {
namespace pass {

/// What every pass does, whatever its direction: it begins, lists, and ends. Not thread-safe.
class SyncPass {
public:
    struct Listing {
        /// What the service has; none when nothing changed there.
        std::optional<RemoteTree> tree;
        /// The service's time of the listing; invalid when it told none.
        QDateTime at;
    };

    /// The arguments outlive this object. In a dry run `tree` is only read; `records` have to be a copy then, as
    /// RecordDatabase::Access::Try makes one.
    SyncPass(const ServiceFolder& service, local::ILocalTree& tree, store::RecordDatabase& records,
             const SyncOptions& options, report::ISyncObserver& observer);

    const PassSides& Sides() const { return _sides; }
    local::Installer& Installing() { return _installer; }
    PassReport& Report() { return _report; }
    PassScope& Scope() { return _scope; }

    /// Checks that the folder belongs to the service's folder. Throws WrongFolder, LocalError and StoreError.
    void CheckFolder();
    /// Checks the records, and clears up after a pass that died and what is too old in the trash. Throws LocalError and
    /// StoreError.
    void Prepare();
    /// Looks through the folder. Throws LocalError.
    local::LocalSnapshot Look();

    /// Asks for what changed since `since`, or for everything when that is invalid. Throws what the library throws, and
    /// HttpException of status 404 when there is no such folder.
    Listing List(const QDateTime& since, const local::LocalSnapshot& snapshot);
    /// Asks for what changed since the last complete pass, or for everything where nobody can go by that. Throws as
    /// List does.
    Listing ListChanges(const local::LocalSnapshot& snapshot);
    /// Notes whether the pass was complete, of which this was the listing.
    void EndListing(const Listing& listing);

    /// Whether any pass got as far as to know what both sides have.
    bool WasInStep() const;

    /// Asks for everything. When there is no such folder, and never was one that this side was in step with, it is
    /// made: not those above it. Throws as the other.
    Listing ListOrMake(const local::LocalSnapshot& snapshot);

    /// What the service has, without what cannot be synced, of which it tells.
    RemoteTree TreeOf(const QVector<sync::config::FolderConfiguration>& folders,
                      const QVector<sync::config::FileConfiguration>& files, const local::LocalSnapshot& snapshot);

    /// Carries `pass` out and tells how it ended.
    report::SyncOutcome Run(const std::function<void()>& pass) const;

private:
    /// Asks for what changed since `since`. None when there is no such folder.
    std::optional<Listing> _Ask(const QDateTime& since, const local::LocalSnapshot& snapshot);
    /// Removes what earlier passes left of downloads of which the service has that version no more.
    void _RemoveUselessParts(const Listing& listing);
    void _RefuseClashes(RemoteTree& tree, const local::LocalSnapshot& snapshot);
    [[noreturn]] void _ThrowMissing() const;
    /// For people: how the synced folder forgets what it was in step with.
    QString _WayOut(const QString& purpose, const QString& address) const;

    local::DryRunTree _dryRunTree;
    PassScope _scope;
    const PassSides _sides;
    local::Trash _trash;
    local::Installer _installer;
    PassReport _report;
};

}  // namespace pass
}  // namespace ovsync
