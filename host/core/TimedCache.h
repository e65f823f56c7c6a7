#pragma once

#include "host/core/PosixSync.h"

#include <QDateTime>
#include <QMutex>
#include <QMutexLocker>
#include <cstdlib>
#include <functional>
#include <utility>

namespace sync {
namespace core {

/// A value that is computed anew when it is older than a time limit, and by the first Get. Thread-safe: the function is
/// never run by two threads at once, but threads that find the value too old at the same moment may run it one after
/// the other.
template <typename T>
class TimedCache {
public:
    /// `compute` gives the value; it must not call Get of the same object. `timeLimit` is in milliseconds and counts in
    /// whole seconds: a value is kept while no more than `timeLimit` / 1000 seconds have passed on the clock, forwards
    /// or backwards.
    TimedCache(std::function<T()> compute, int timeLimit, T value = T())
        : _value(std::move(value)), _compute(std::move(compute)), _timeLimit(timeLimit) {}
    virtual ~TimedCache() = default;

    TimedCache(const TimedCache&) = delete;
    TimedCache& operator=(const TimedCache&) = delete;

    /// The value. Whatever the function throws passes through, std::bad_function_call when it is empty, and the next
    /// call tries again.
    T Get() {
        const QDateTime now = _Now();
        if (_IsTooOld(now)) {
            QMutexLocker lock(&_mutex);
            _value = _compute();
            _lastRefresh = now;
        }
        QMutexLocker lock(&_mutex);
        return _value;
    }

protected:
    /// The local time; for tests to replace.
    virtual QDateTime _Now() const { return QDateTime::currentDateTime(); }

private:
    bool _IsTooOld(const QDateTime& now) {
        QMutexLocker lock(&_mutex);
        // How far a null date lies from another differs between Qt versions.
        return _lastRefresh.isNull() || std::abs(static_cast<qint64>(now.secsTo(_lastRefresh))) > _timeLimit / 1000;
    }

    T _value;
    QMutex _mutex;
    std::function<T()> _compute;
    QDateTime _lastRefresh;
    int _timeLimit;
};

}  // namespace core
}  // namespace sync
