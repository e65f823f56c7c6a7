// Loaded before the C library into the service, to kill it at a chosen moment: before the call number CRASH_POINT, from
// 1, of those that change something on the disk.

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace {

void Count() {
    static const char* const text = std::getenv("CRASH_POINT");
    static const long last = text == nullptr ? 0 : std::strtol(text, nullptr, 10);
    static std::atomic<long> calls{0};
    if (++calls == last) {
        static_cast<void>(raise(SIGKILL));
    }
}

}  // namespace

#define COUNTED(result, name, parameters, arguments)                                            \
    extern "C" __attribute__((visibility("default"))) result name parameters {                  \
        static auto* const real = reinterpret_cast<decltype(&(name))>(dlsym(RTLD_NEXT, #name)); \
        Count();                                                                                \
        return real arguments;                                                                  \
    }

COUNTED(int, renameat, (int a, const char* b, int c, const char* d), (a, b, c, d))
COUNTED(int, linkat, (int a, const char* b, int c, const char* d, int e), (a, b, c, d, e))
COUNTED(int, mkdirat, (int a, const char* b, mode_t c), (a, b, c))
COUNTED(int, unlinkat, (int a, const char* b, int c), (a, b, c))
COUNTED(int, unlink, (const char* a), (a))
COUNTED(int, fsync, (int a), (a))
COUNTED(int, fdatasync, (int a), (a))
COUNTED(ssize_t, write, (int a, const void* b, size_t c), (a, b, c))
COUNTED(ssize_t, pwrite64, (int a, const void* b, size_t c, off64_t d), (a, b, c, d))
COUNTED(ssize_t, pwrite, (int a, const void* b, size_t c, off_t d), (a, b, c, d))
