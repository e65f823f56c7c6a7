#pragma once

#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>

/// What a fuzzer tries: it is called with one input after the other, and ends the process when a property does not
/// hold.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

/// Ends the process, naming `property`, unless it holds.
inline void Require(bool holds, const char* property) {
    if (!holds) {
        std::cerr << "Does not hold: " << property << std::endl;
        std::abort();
    }
}

inline QByteArray BytesOf(const uint8_t* data, size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size));
}

/// The body of an input that is a whole HTTP answer as the fixtures hold them, and any other input itself.
inline QByteArray BodyOf(const uint8_t* data, size_t size) {
    const QByteArray bytes = BytesOf(data, size);
    const int headEnd = bytes.indexOf("\n\n");
    return bytes.startsWith("HTTP/") && headEnd >= 0 ? bytes.mid(headEnd + 2) : bytes;
}

}  // namespace fuzz
