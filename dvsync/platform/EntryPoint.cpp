#define WIN32_LEAN_AND_MEAN
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        // Windows refuses it to a library with thread-local storage, which mingw's runtime gives every DLL. Then the
        // notifications stay and run the runtime's own clean-up, which needs them; nothing here is done at them.
        DisableThreadLibraryCalls(library);
    }
    return TRUE;
}
