#pragma once

#include <QByteArray>
#include <QString>

namespace ovsync {
namespace cli {

/// Standard output, buffered. On a terminal, control characters of what is shown become '?', so that a name cannot
/// drive the terminal. Not thread-safe.
class Output {
public:
    Output();

    bool IsTerminal() const { return _isTerminal; }

    /// `text` as it may be shown to whoever reads the output.
    QByteArray Shown(const QString& text) const;

    /// `text` with a '?' for each control character.
    static QString WithoutControlCharacters(const QString& text);

    /// Throws SyncException when the output cannot be written.
    void Write(const QByteArray& bytes);

    /// To be called when all is written. Throws SyncException when the output cannot be written.
    void Flush();

private:
    QByteArray _buffer;
    bool _isTerminal;
};

}  // namespace cli
}  // namespace ovsync
