// A library that counts what the loader tells it of threads.

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

int threadNotifications = 0;

}  // namespace

// Gives way to the entry point under test.
extern "C" __attribute__((weak)) BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD /*reason*/, LPVOID /*reserved*/) {
    return TRUE;
}

extern "C" BOOL WINAPI CountingEntry(HINSTANCE library, DWORD reason, LPVOID reserved) {
    if (reason == DLL_THREAD_ATTACH || reason == DLL_THREAD_DETACH) {
        ++threadNotifications;
    }
    return DllMain(library, reason, reserved);
}

extern "C" __declspec(dllexport) int ThreadNotifications() {
    return threadNotifications;
}
