#pragma once

#include <QString>

namespace tests {

inline QString Text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

}  // namespace tests
