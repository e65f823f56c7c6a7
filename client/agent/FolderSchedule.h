#pragma once

#include <chrono>
#include <functional>
#include <optional>

namespace ovsync {
namespace agent {

/// When the next pass of a folder is due. It has no clock: whoever asks says what time it is. Not thread-safe.
///
/// A pass is due at once, then so long after each, and two seconds after the last change in the folder; whoever changes
/// something all the time does not put it off for more than half a minute. After a failed pass it is waited as long as
/// the service's settings say, then longer each time, up to fifteen minutes, whatever changes meanwhile.
class FolderSchedule {
public:
    /// Since a moment that is always the same, on a clock that nobody sets.
    using Time = std::chrono::milliseconds;
    /// A number from 0 on and below 1, another one each time.
    using Random = std::function<double()>;

    static constexpr std::chrono::seconds SettlingTime{2};
    static constexpr std::chrono::seconds LongestSettling{30};
    /// What the second failure in a row waits at least.
    static constexpr std::chrono::seconds ShortestGrowingDelay{5};
    static constexpr std::chrono::minutes LongestDelay{15};

    enum class End {
        Done,
        Failed,
        /// No pass will do better before something is changed.
        Rejected
    };

    FolderSchedule(Time now, Random random);

    /// Holds from the end of the next pass on.
    void SetIntervals(std::chrono::seconds frequency, std::chrono::seconds delayAfterFailure);

    /// Something changed in the folder, maybe while a pass is going on.
    void NoteChange(Time now);
    /// Who may read or write in the folder changed, which may be why passes failed: as NoteChange, and forgets
    /// failures.
    void NoteAccess(Time now);
    /// The pass that begins sees every change that was noted.
    void BeginPass();
    void EndPass(Time now, End end);
    /// Something was changed that failures may have come from: forgets them.
    void TryAgain(Time now);

    /// None after a rejection.
    std::optional<Time> Due() const;

private:
    Time _DelayAfterFailures() const;

    const Random _random;
    std::chrono::seconds _frequency{180};
    std::chrono::seconds _delayAfterFailure{0};
    Time _next;
    std::optional<Time> _firstChange;
    Time _lastChange{0};
    int _failures = 0;
    bool _isRejected = false;
};

}  // namespace agent
}  // namespace ovsync
