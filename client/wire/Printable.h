#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>

namespace ovsync {
namespace wire {

/// Bytes from the wire as they go into a message: printable ASCII stays, a backslash and everything else becomes
/// `\xNN`. At most the first 200 bytes, followed by "..." when there are more. Thread-safe.
QString Printable(const char* bytes, size_t size);
QString Printable(const QByteArray& bytes);

}  // namespace wire
}  // namespace ovsync
