#include "client/wire/Printable.h"

namespace ovsync {
namespace wire {

QString Printable(const QByteArray& bytes) {
    static const char* const hexDigits = "0123456789abcdef";
    const int limit = 200;
    QString text;
    for (const char byte : bytes.left(limit)) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x20 || value > 0x7e || byte == '\\') {
            text += QLatin1String("\\x");
            text += QLatin1Char(hexDigits[value >> 4]);
            text += QLatin1Char(hexDigits[value & 0xf]);
        } else {
            text += QLatin1Char(byte);
        }
    }
    if (bytes.size() > limit) {
        text += QLatin1String("...");
    }
    return text;
}

}  // namespace wire
}  // namespace ovsync
