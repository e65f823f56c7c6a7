// Loaded before the C library into a program, to trouble it at a chosen one, counted from 1, of the calls by which it
// changes something on the disk:
// CRASH_POINT=N kills it before call N.
// FAILURE_POINT=N makes call N fail with the error number FAILURE_ERROR, and with FAILURE_LASTS=1 all after it that
// could need space.
// MOVE_POINT=N moves the file MOVE_FROM to MOVE_TO before call N, as if somebody had done it.
// CALL_COUNT=FILE writes into FILE, in the end, how many calls there were.

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>

namespace {

long NumberFrom(const char* variable) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
}

std::atomic<long> calls{0};

/// Whether the call is to fail.
bool Count(bool couldNeedSpace) {
    static const long crashPoint = NumberFrom("CRASH_POINT");
    static const long movePoint = NumberFrom("MOVE_POINT");
    static const long failurePoint = NumberFrom("FAILURE_POINT");
    static const int error = static_cast<int>(NumberFrom("FAILURE_ERROR"));
    static const bool lasts = NumberFrom("FAILURE_LASTS") != 0;
    const long call = ++calls;
    if (call == movePoint) {
        static_cast<void>(syscall(SYS_renameat, AT_FDCWD, std::getenv("MOVE_FROM"), AT_FDCWD, std::getenv("MOVE_TO")));
    }
    if (call == crashPoint) {
        static_cast<void>(raise(SIGKILL));
    }
    if (failurePoint == 0 || call < failurePoint || (call > failurePoint && !(lasts && couldNeedSpace))) {
        return false;
    }
    errno = error;
    return true;
}

__attribute__((destructor)) void WriteCount() {
    const char* const name = std::getenv("CALL_COUNT");
    if (name != nullptr) {
        std::ofstream(name) << calls.load();
    }
}

bool IsOnDisk(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

}  // namespace

#define COUNTED_IF(condition, couldNeedSpace, result, name, parameters, arguments)              \
    extern "C" __attribute__((visibility("default"))) result name parameters {                  \
        static auto* const real = reinterpret_cast<decltype(&(name))>(dlsym(RTLD_NEXT, #name)); \
        if ((condition) && Count(couldNeedSpace)) {                                             \
            return -1;                                                                          \
        }                                                                                       \
        return real arguments;                                                                  \
    }
#define COUNTED(couldNeedSpace, result, name, parameters, arguments) \
    COUNTED_IF(true, couldNeedSpace, result, name, parameters, arguments)

COUNTED(true, int, renameat, (int a, const char* b, int c, const char* d), (a, b, c, d))
COUNTED(true, int, renameat2, (int a, const char* b, int c, const char* d, unsigned e), (a, b, c, d, e))
COUNTED(true, int, linkat, (int a, const char* b, int c, const char* d, int e), (a, b, c, d, e))
COUNTED(true, int, mkdirat, (int a, const char* b, mode_t c), (a, b, c))
COUNTED(false, int, unlinkat, (int a, const char* b, int c), (a, b, c))
COUNTED(false, int, unlink, (const char* a), (a))
COUNTED(true, int, fsync, (int a), (a))
COUNTED(true, int, fdatasync, (int a), (a))
COUNTED(true, int, syncfs, (int a), (a))
COUNTED(false, int, futimens, (int a, const timespec* b), (a, b))
COUNTED(false, int, ftruncate64, (int a, off64_t b), (a, b))
COUNTED(false, int, ftruncate, (int a, off_t b), (a, b))
COUNTED_IF(IsOnDisk(a), true, ssize_t, write, (int a, const void* b, size_t c), (a, b, c))
COUNTED(true, ssize_t, pwrite64, (int a, const void* b, size_t c, off64_t d), (a, b, c, d))
COUNTED(true, ssize_t, pwrite, (int a, const void* b, size_t c, off_t d), (a, b, c, d))
