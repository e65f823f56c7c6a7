#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace output {

/// What may be shown on a terminal. Control characters could drive it, and those that turn the direction of text around
/// could make it show another text than there is. Thread-safe.

/// With a '?' for each such character.
QString TerminalText(const QString& text);

/// `path` with its escape for each byte order mark that begins a name: nobody sees it, and many readers drop it. For
/// other outputs than terminals, too.
QString VisiblePath(QString path);
/// The same for each byte order mark that `text` has.
QString VisibleText(QString text);

/// With \uXXXX for each such character but line feeds, which in JSON stands for the same. `text` is UTF-8.
QByteArray TerminalJson(const QByteArray& text);

}  // namespace output
}  // namespace ovsync
