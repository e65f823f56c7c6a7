#pragma once

#include <QtGlobal>

/// Exports what a host may use of this library while the library is built, imports it everywhere else.
#ifdef DVSYNC_LIBRARY
#define DVSYNC_EXPORT Q_DECL_EXPORT
#else
#define DVSYNC_EXPORT Q_DECL_IMPORT
#endif
