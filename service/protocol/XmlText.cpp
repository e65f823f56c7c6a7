#include "service/protocol/XmlText.h"

#include <cstdint>

namespace service::protocol {

bool IsValidUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        std::size_t length = 1;
        std::uint32_t point = lead;
        std::uint32_t smallest = 0;
        if (lead >= 0xF0) {
            length = 4;
            point = lead & 0x07U;
            smallest = 0x10000;
        } else if (lead >= 0xE0) {
            length = 3;
            point = lead & 0x0FU;
            smallest = 0x800;
        } else if (lead >= 0xC0) {
            length = 2;
            point = lead & 0x1FU;
            smallest = 0x80;
        } else if (lead >= 0x80) {
            return false;
        }
        if (lead >= 0xF8 || i + length > text.size()) {
            return false;
        }
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0U) != 0x80U) {
                return false;
            }
            point = (point << 6U) | (next & 0x3FU);
        }
        if (point < smallest || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) {
            return false;
        }
        i += length;
    }
    return true;
}

void AppendEscaped(std::string& xml, std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        switch (c) {
            case '&':
                xml += "&amp;";
                break;
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            case '"':
                xml += "&quot;";
                break;
            case '\r':
                // A bare one would be read back as a line feed.
                xml += "&#13;";
                break;
            case '\n':
            case '\t':
                xml += c;
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    xml += replacement;
                } else if (const auto three = text.substr(i, 3); three == "\xEF\xBF\xBE" || three == "\xEF\xBF\xBF") {
                    xml += replacement;
                    i += 2;
                } else {
                    xml += c;
                }
        }
    }
}

}  // namespace service::protocol
