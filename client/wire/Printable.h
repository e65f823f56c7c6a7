#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace wire {

/// `bytes` from the wire as they go into a message: printable ASCII stays, a backslash and everything else becomes
/// \xNN. At most the first 200 bytes, followed by "..." when there are more. Thread-safe.
QString Printable(const QByteArray& bytes);

}  // namespace wire
}  // namespace ovsync
