#include "client/agent/FolderSchedule.h"

#include <algorithm>
#include <utility>

namespace ovsync {
namespace agent {

namespace {

/// Longer by up to this part, so that clients do not come back to a service all at once.
const double Jitter = 0.5;

}  // namespace

FolderSchedule::FolderSchedule(Time now, Random random) : _random(std::move(random)), _next(now) {}

void FolderSchedule::SetIntervals(std::chrono::seconds frequency, std::chrono::seconds delayAfterFailure) {
    _frequency = frequency;
    _delayAfterFailure = delayAfterFailure;
}

void FolderSchedule::NoteChange(Time now) {
    if (!_firstChange) {
        _firstChange = now;
    }
    _lastChange = now;
}

void FolderSchedule::NoteAccess(Time now) {
    NoteChange(now);
    _failures = 0;
}

void FolderSchedule::BeginPass() {
    _firstChange.reset();
}

void FolderSchedule::EndPass(Time now, End end) {
    _isRejected = end == End::Rejected;
    _failures = end == End::Failed ? _failures + 1 : 0;
    _next = now + (_failures > 0 ? _DelayAfterFailures() : Time(_frequency));
}

void FolderSchedule::TryAgain(Time now) {
    _isRejected = false;
    _failures = 0;
    _next = now;
}

std::optional<FolderSchedule::Time> FolderSchedule::Due() const {
    if (_isRejected) {
        return std::nullopt;
    }
    if (_failures > 0 || !_firstChange) {
        return _next;
    }
    const Time settled = std::min<Time>(_lastChange + SettlingTime, *_firstChange + LongestSettling);
    return std::min(_next, settled);
}

FolderSchedule::Time FolderSchedule::_DelayAfterFailures() const {
    const Time longest = LongestDelay;
    Time delay = std::min<Time>(_delayAfterFailure, longest);
    for (int failure = 2; failure <= _failures && delay < longest; ++failure) {
        delay = failure == 2 ? std::max<Time>(2 * delay, ShortestGrowingDelay) : 2 * delay;
    }
    const auto part = 1 + Jitter * _random();
    return std::min(longest, Time(static_cast<Time::rep>(static_cast<double>(delay.count()) * part)));
}

}  // namespace agent
}  // namespace ovsync
