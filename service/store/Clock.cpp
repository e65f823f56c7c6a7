#include "service/store/Clock.h"

#include <chrono>

namespace service::store {

std::int64_t Clock::Now() {
    NotBefore(std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
                  .count());
    return _latest;
}

void Clock::NotBefore(std::int64_t milliseconds) {
    std::int64_t latest = _latest;
    while (latest < milliseconds && !_latest.compare_exchange_weak(latest, milliseconds)) {
    }
}

}  // namespace service::store
