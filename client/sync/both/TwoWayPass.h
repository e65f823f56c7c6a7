#pragma once

#include <QSet>
#include <QString>
#include <optional>

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
    /// Brings both sides in step. Returns the paths of what was to be sent.
    QSet<QString> _Join(local::LocalSnapshot& snapshot, pass::SyncPass::Listing& listing);

    pass::SyncPass& _pass;
    const pass::PassSides& _sides;
    pass::PassReport& _report;
    const std::optional<QSet<QString>> _changedHere;
};

}  // namespace both
}  // namespace ovsync
