#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace output {

/// What goes to standard error. On a terminal it is TerminalText. Thread-safe.

/// A line of its own, with the program's name before it.
void Complain(const QString& message);

/// `text` as it may be shown there.
QByteArray ShownInErrors(const QString& text);

}  // namespace output
}  // namespace ovsync
