// The sync application that the library looks for and starts. On Windows it stays until it is told to end.

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

int main() {
    Sleep(INFINITE);
}
