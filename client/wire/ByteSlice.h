#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstring>

#include "client/wire/Printable.h"

namespace ovsync {
namespace wire {

/// A piece of text that somebody else owns. A plain value.
struct ByteSlice {
    const char* text = "";
    size_t size = 0;

    /// Without the white space of XML at both ends.
    ByteSlice Trimmed() const {
        ByteSlice trimmed = *this;
        while (trimmed.size > 0 && _IsSpace(trimmed.text[0])) {
            ++trimmed.text;
            --trimmed.size;
        }
        while (trimmed.size > 0 && _IsSpace(trimmed.text[trimmed.size - 1])) {
            --trimmed.size;
        }
        return trimmed;
    }

    bool Is(const char* other, size_t otherSize) const {
        return size == otherSize && std::memcmp(text, other, size) == 0;
    }

    QString ToPrintable() const { return Printable(QByteArray(text, static_cast<int>(size))); }

private:
    static bool _IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
};

}  // namespace wire
}  // namespace ovsync
