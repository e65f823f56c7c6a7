#pragma once

#include <QByteArray>
#include <ostream>

QT_BEGIN_NAMESPACE

/// Lets GoogleTest show bytes as text.
inline void PrintTo(const QByteArray& bytes, std::ostream* stream) {
    *stream << '"' << bytes.constData() << '"';
}

QT_END_NAMESPACE
