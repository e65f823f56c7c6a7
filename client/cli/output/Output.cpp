#include "client/cli/output/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "client/cli/output/TerminalText.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace output {

namespace {

const int BufferSize = 64 * 1024;

}  // namespace

Output::Output() : _isTerminal(isatty(STDOUT_FILENO) == 1) {
    _buffer.reserve(BufferSize);
}

QByteArray Output::Shown(const QString& text) const {
    const QString visible = VisiblePath(text);
    return (_isTerminal ? TerminalText(visible) : visible).toUtf8();
}

void Output::Write(const QByteArray& bytes) {
    if (_buffer.size() + bytes.size() > BufferSize) {
        Flush();
    }
    _buffer.append(_isTerminal ? TerminalJson(bytes) : bytes);
}

void Output::Flush() {
    const char* next = _buffer.constData();
    const char* const end = next + _buffer.size();
    while (next != end) {
        const ssize_t written = write(STDOUT_FILENO, next, static_cast<size_t>(end - next));
        if (written >= 0) {
            next += written;
        } else if (errno != EINTR) {
            throw sync::core::SyncException(
                QStringLiteral("Standard output: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
        }
    }
    _buffer.resize(0);
}

}  // namespace output
}  // namespace ovsync
