// The sync application that the library looks for and starts. It stays until it is told to end.

#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

int main() {
    Sleep(INFINITE);
}

#else

#include <csignal>
#include <cstdio>
#include <initializer_list>

int main() {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);

    // Whoever reads the output of the process that started this one would wait for this one otherwise.
    for (std::FILE* stream : {stdin, stdout, stderr}) {
        if (std::freopen("/dev/null", "r+", stream) == nullptr) {
            return 1;
        }
    }

    int signal = 0;
    sigwait(&ends, &signal);
    return 0;
}

#endif
