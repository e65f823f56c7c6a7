#include "service/http/StopSignal.h"

namespace service::http {

void StopSignal::Stop() {
    const std::lock_guard lock(_mutex);
    _isStopped = true;
    _changed.notify_all();
}

bool StopSignal::IsStopped() {
    const std::lock_guard lock(_mutex);
    return _isStopped;
}

bool StopSignal::WaitFor(std::chrono::milliseconds time) {
    std::unique_lock lock(_mutex);
    return _changed.wait_for(lock, time, [this] { return _isStopped; });
}

}  // namespace service::http
