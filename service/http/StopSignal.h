#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace service::http {

/// Tells the threads that wait on purpose that the server is stopping. Thread-safe.
class StopSignal {
public:
    void Stop();

    bool IsStopped();

    /// Waits; returns true as soon as the server stops, false when the time is over.
    [[nodiscard]] bool WaitFor(std::chrono::milliseconds time);

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _isStopped = false;
};

}  // namespace service::http
