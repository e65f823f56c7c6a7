#pragma once

#include <optional>

#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace report {

/// Makes one event of all deletions that wait for the rest of a pass, because they have one cause and nobody can do
/// anything about each of them. A plain value.
class WaitingDeletions {
public:
    /// `event` is of the kind Waiting.
    void Add(const SyncEvent& event) {
        ++_count;
        _last = event;
    }

    /// None when nothing waits.
    std::optional<SyncEvent> Told() const {
        if (_count < 2) {
            return _last;
        }
        return SyncEvent{SyncEvent::Kind::Waiting, QStringLiteral("."),
                         QStringLiteral("%1 deletions wait until everything else is transferred; they follow by "
                                        "themselves once what else is named is mended")
                             .arg(_count)};
    }

private:
    int _count = 0;
    std::optional<SyncEvent> _last;
};

}  // namespace report
}  // namespace ovsync
