#include "client/agent/AgentClock.h"

#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "host/core/SyncException.h"

namespace ovsync {
namespace agent {

std::chrono::milliseconds Now() {
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::seconds(time.tv_sec) +
                                                                 std::chrono::nanoseconds(time.tv_nsec));
}

int NewAlarm() {
    const int descriptor = timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (descriptor < 0) {
        throw sync::core::SyncException(
            QStringLiteral("There is no timer to be had: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    }
    return descriptor;
}

void SetAlarm(int descriptor, std::chrono::milliseconds time) {
    itimerspec alarm{};
    // A time of zero would be none.
    const auto nanoseconds = std::chrono::nanoseconds(std::max(time, std::chrono::milliseconds(1))).count();
    alarm.it_value.tv_sec = static_cast<time_t>(nanoseconds / 1000000000);
    alarm.it_value.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    timerfd_settime(descriptor, TFD_TIMER_ABSTIME, &alarm, nullptr);
}

}  // namespace agent
}  // namespace ovsync
