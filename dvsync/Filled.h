#pragma once

#include <QString>

namespace sync {
namespace dv {
namespace dvsync {

/// `text` with its placeholders filled in their order, all at once: a value that looks like a placeholder stays as it
/// is. The values are QStrings, nine at most. Thread-safe.
template <typename... Values>
QString Filled(const char* text, const Values&... values) {
    return QString(QLatin1String(text)).arg(values...);
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
