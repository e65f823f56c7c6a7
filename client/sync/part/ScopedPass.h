#pragma once

#include <QSet>
#include <QString>
#include <functional>
#include <optional>

#include "client/sync/part/LastState.h"
#include "client/sync/part/ServicePart.h"
#include "client/sync/pass/SyncPass.h"
#include "client/sync/plan/SyncDecision.h"

namespace ovsync {
namespace part {

/// Carries a pass out on what changed since the last one of its direction, where the service tells that, and on
/// everything where it does not. For one run. Not thread-safe.
class ScopedPass {
public:
    /// Does what is to be done with what both sides have. Returns the paths of what was to be sent.
    using Join = std::function<QSet<QString>(local::LocalSnapshot&, pass::SyncPass::Listing&)>;

    /// `pass` outlives this object. `changedHere`: the paths that may have changed here since the last pass that went
    /// through to its end; none when nobody knows.
    ScopedPass(pass::SyncPass& pass, plan::Direction direction, Join join,
               const std::optional<QSet<QString>>& changedHere = std::nullopt);

    /// Throws as PullPass::Run does.
    [[nodiscard]] report::SyncOutcome Run();

private:
    void _Run();
    /// Looks at everything.
    void _RunWhole(local::LocalSnapshot snapshot, bool asksForState);
    /// Looks only at what changed. `snapshot` is of the whole folder, or none where `_changedHere` says where to look.
    /// False, and nothing is done, when everything has to be looked at.
    bool _RunPart(std::optional<local::LocalSnapshot>& snapshot, const changes::ServiceChanges& changed);
    /// Everything, or nothing where the service says that nothing changed since the last pass.
    pass::SyncPass::Listing _List(const local::LocalSnapshot& snapshot);
    /// Whether this pass has something to do when nothing changed there.
    bool _HasWorkHere(const local::LocalSnapshot& snapshot);
    /// False when everything has to be listed.
    bool _LookAtOpen(ServicePart& there);
    void _TellOfHere(const QVector<report::SyncEvent>& refused);
    void _Record(const local::LocalSnapshot& snapshot, const pass::RemoteTree& remote, const QSet<QString>& sent);
    /// Whether the service can be asked for `path`.
    bool _HasPlaceThere(const QString& path) const;
    /// Whether the service can be asked for changes from now on: what was left out has to be listed.
    bool _IsAllSeen(const pass::RemoteTree& remote) const;
    /// Whether what each side has is recorded, or open: nobody tells of the rest again.
    bool _IsAllRecorded(const local::LocalSnapshot& snapshot, const pass::RemoteTree& remote,
                        const QSet<QString>& sent) const;

    pass::SyncPass& _pass;
    const pass::PassSides& _sides;
    pass::PassReport& _report;
    const plan::Direction _direction;
    const Join _join;
    const std::optional<QSet<QString>> _changedHere;
    LastState _state;
};

}  // namespace part
}  // namespace ovsync
