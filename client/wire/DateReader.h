#pragma once

#include <QByteArray>
#include <QDateTime>
#include <cstddef>

namespace ovsync {
namespace wire {

/// The dates of HTTP and WebDAV. No locale has a say in them. Thread-safe.

/// Reads the three date formats of HTTP (RFC 9110: IMF-fixdate, RFC 850, asctime) and RFC 3339. In UTC; invalid when
/// `text` is anything else. A year of two digits is the one at most 50 years ahead of now.
QDateTime ReadDate(const char* text, size_t size);

/// `time` as an IMF-fixdate, rounded down to the second; empty when it is invalid or its year has not four digits.
QByteArray HttpDate(const QDateTime& time);

}  // namespace wire
}  // namespace ovsync
