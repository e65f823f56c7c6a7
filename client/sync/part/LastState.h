#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include "client/store/RecordDatabase.h"
#include "client/sync/plan/SyncDecision.h"

namespace ovsync {
namespace part {

/// What a pass leaves to the next one of its direction, so that that one need not look at everything. A plain value.
class LastState {
public:
    explicit LastState(plan::Direction direction) : _direction(direction) {}

    /// Of the service's folder; empty when everything has to be listed.
    QString there;
    /// When everything was listed, by the clock here.
    QDateTime listed;
    /// The rules by which things were left alone.
    QString excluded;
    /// Whether the service was found not to tell what changed.
    bool isUnable = false;
    /// Whether its files have checksums.
    bool hasChecksums = false;
    /// Whether all of the folder here has to be looked at, because what is open there has no path.
    bool needsLook = false;
    /// What is not in step.
    QStringList open;

    /// None of an earlier pass when it was made for other rules, and when it is more than a day old: a service that did
    /// not tell of everything is believed no longer.
    static LastState Of(store::RecordDatabase& records, plan::Direction direction, const QString& excluded);
    /// Writes nothing when that is recorded already.
    void Record(store::RecordDatabase& records) const;
    /// To be called when records are moved: what the service told of before was of their old places, and a pass that
    /// breaks off afterwards would leave a state since which it is not told again.
    static void Forget(store::RecordDatabase& records);

private:
    plan::Direction _direction;
};

}  // namespace part
}  // namespace ovsync
