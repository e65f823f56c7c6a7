#pragma once

#include <QString>
#include <cstddef>
#include <string>

/// UTF-16 as Qt has it and as the standard library has it. Thread-safe.

namespace sync {
namespace dv {
namespace dvsync {

inline QString FromUtf16(const std::u16string& text) {
    return QString::fromUtf16(reinterpret_cast<const ushort*>(text.data()), static_cast<int>(text.size()));
}

inline std::u16string ToUtf16(const QString& text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size()));
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
