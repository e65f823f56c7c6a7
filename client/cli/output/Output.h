#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace output {

/// Standard output, buffered. On a terminal nothing is written that could drive it. Not thread-safe.
class Output {
public:
    Output();

    /// `text` as it may be shown to whoever reads the output: on a terminal TerminalText.
    QByteArray Shown(const QString& text) const;

    /// UTF-8; on a terminal TerminalJson of it, because JSON has its own way to write what is not shown. Throws
    /// SyncException when the output cannot be written.
    void Write(const QByteArray& bytes);

    /// To be called when all is written. Throws SyncException when the output cannot be written.
    void Flush();

private:
    QByteArray _buffer;
    bool _isTerminal;
};

}  // namespace output
}  // namespace ovsync
