#pragma once

#include <QElapsedTimer>
#include <QtGlobal>

namespace ovsync {
namespace output {

/// One line on standard error that tells how much of an answer came, from one second after the first sign of its
/// transaction on. For a terminal. Not thread-safe.
class Progress {
public:
    /// `bytes` came so far. The line goes when the transaction is over.
    void Show(qint64 bytes, bool isOver);

private:
    QElapsedTimer _timer;
    bool _isShown = false;
};

}  // namespace output
}  // namespace ovsync
