#include "client/wire/Printable.h"

namespace ovsync {
namespace wire {

QString Printable(const char* bytes, size_t size) {
    static const char* const hexDigits = "0123456789abcdef";
    const size_t limit = 200;
    QString text;
    for (size_t i = 0; i < size && i < limit; ++i) {
        const auto value = static_cast<unsigned char>(bytes[i]);
        if (value < 0x20 || value > 0x7e || value == '\\') {
            text += QLatin1String("\\x");
            text += QLatin1Char(hexDigits[value >> 4U]);
            text += QLatin1Char(hexDigits[value & 0xfU]);
        } else {
            text += QLatin1Char(bytes[i]);
        }
    }
    if (size > limit) {
        text += QLatin1String("...");
    }
    return text;
}

QString Printable(const QByteArray& bytes) {
    return Printable(bytes.constData(), static_cast<size_t>(bytes.size()));
}

}  // namespace wire
}  // namespace ovsync
