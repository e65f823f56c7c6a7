// Loaded before the C library into a program, to set its clock CLOCK_SHIFT seconds ahead. Times of files stay true.

#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>

namespace {

time_t Shift() {
    static const char* const text = std::getenv("CLOCK_SHIFT");
    static const time_t shift = text == nullptr ? 0 : std::strtol(text, nullptr, 10);
    return shift;
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        time->tv_sec += Shift();
    }
    return static_cast<int>(result);
}

int gettimeofday(struct timeval* time, void*) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}

time_t time(time_t* result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}
}
