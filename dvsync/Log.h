#pragma once

#include <log4cplus/logger.h>

#include <QString>

namespace sync {
namespace dv {
namespace dvsync {

/// `text` as log4cplus takes it, be it built for wide characters (with
/// UNICODE defined, as log4cplus has it) or for narrow ones, which are UTF-8 then. Thread-safe.
inline log4cplus::tstring LogText(const QString& text) {
#ifdef UNICODE
    return text.toStdWString();
#else
    return text.toUtf8().constData();
#endif
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

/// Writes a record when `logger` is enabled for `level`. `text` is a QString, and is evaluated only then. `file` is the
/// literal that the record names as its source.
#define DVSYNC_LOG(logger, level, file, text)                                                                        \
    do {                                                                                                             \
        if ((logger).isEnabledFor(level)) {                                                                          \
            (logger).forcedLog(level, ::sync::dv::dvsync::LogText(text), file, __LINE__, DVSYNC_FUNCTION_SIGNATURE); \
        }                                                                                                            \
    } while (false)

#ifdef _MSC_VER
#define DVSYNC_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define DVSYNC_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
#endif
