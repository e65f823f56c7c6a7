#pragma once

#include <optional>

#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace report {

/// Makes one event of all deletions that wait for the rest of a pass, because they have one cause and nobody can do
/// anything about each of them. A plain value.
class WaitingDeletions {
public:
    /// `isLimitGiven`: whether it was said what this one pass may delete.
    explicit WaitingDeletions(bool isLimitGiven = false) : _isLimitGiven(isLimitGiven) {}

    /// `event` is of the kind Waiting.
    void Add(const SyncEvent& event) {
        ++_count;
        _last = event;
    }

    /// None when nothing waits.
    std::optional<SyncEvent> Told() const {
        if (_count == 0) {
            return std::nullopt;
        }
        SyncEvent told = *_last;
        if (_count > 1) {
            told.path = QStringLiteral(".");
            told.detail =
                QStringLiteral(
                    "%1 deletions wait until everything else is transferred; they follow %2 once what else "
                    "is named is mended")
                    .arg(QString::number(_count), _isLimitGiven ? QStringLiteral("in a pass with the same --max-delete")
                                                                : QStringLiteral("by themselves"));
        } else if (_isLimitGiven) {
            told.detail += QStringLiteral("; it follows in a pass with the same --max-delete");
        }
        return told;
    }

private:
    bool _isLimitGiven;
    int _count = 0;
    std::optional<SyncEvent> _last;
};

}  // namespace report
}  // namespace ovsync
