#pragma once

// The contract's namespace has the name of the POSIX function sync(), and a program cannot have both. Here the function
// is declared under another name, once and for all, because <unistd.h> declares it only where it is read first.
#if defined(__unix__) || defined(__APPLE__)
#ifdef _UNISTD_H
#error \
    "Read a header of host/ before <unistd.h>, or compile with -include host/core/PosixSync.h, as the CMake targets do."
#endif
#define sync posix_sync
#include <unistd.h>  // IWYU pragma: keep
#undef sync
#endif
