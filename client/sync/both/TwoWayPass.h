#pragma once

#include <QSet>
#include <QString>
#include <optional>

#include "client/sync/both/LastState.h"
#include "client/sync/both/ServicePart.h"
#include "client/sync/pass/SyncPass.h"

namespace ovsync {
namespace both {

/// Brings a synced folder and the service's folder in step with each other. docs/sync.md tells what it does with every
/// file. For one run. Not thread-safe.
class TwoWayPass {
public:
    /// `pass` outlives this object. `changedHere`: the paths that may have changed here since the last pass that went
    /// through to its end; none when nobody knows.
    explicit TwoWayPass(pass::SyncPass& pass, const std::optional<QSet<QString>>& changedHere = std::nullopt)
        : _pass(pass), _sides(pass.Sides()), _report(pass.Report()), _changedHere(changedHere) {}

    /// Throws as PullPass::Run does.
    [[nodiscard]] report::SyncOutcome Run();

private:
    void _Sync();
    /// Looks at everything.
    void _SyncWhole(local::LocalSnapshot snapshot, bool asksForState);
    /// Looks only at what changed. `snapshot` is of the whole folder, or none where `_changedHere` says where to look.
    /// False, and nothing is done, when everything has to be looked at.
    bool _SyncPart(std::optional<local::LocalSnapshot>& snapshot, const changes::ServiceChanges& changed);
    /// False when everything has to be listed.
    bool _LookAtOpen(ServicePart& there);
    /// Brings both sides in step.
    void _Join(local::LocalSnapshot& snapshot, pass::SyncPass::Listing& listing);
    void _Record(const local::LocalSnapshot& snapshot, const pass::RemoteTree& remote);
    /// Whether the service can be asked for `path`.
    bool _HasPlaceThere(const QString& path) const;
    /// Whether the service can be asked for changes from now on: what was left out has to be listed.
    bool _IsAllSeen(const pass::RemoteTree& remote) const;
    /// Whether what each side has is recorded, or open: nobody tells of the rest again.
    bool _IsAllRecorded(const local::LocalSnapshot& snapshot, const pass::RemoteTree& remote) const;

    pass::SyncPass& _pass;
    const pass::PassSides& _sides;
    pass::PassReport& _report;
    const std::optional<QSet<QString>> _changedHere;
    LastState _state;
    /// The paths of what was to be sent.
    QSet<QString> _sent;
};

}  // namespace both
}  // namespace ovsync
