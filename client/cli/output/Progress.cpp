#include "client/cli/output/Progress.h"

#include <iostream>

#include "client/cli/output/ProgressLine.h"

namespace ovsync {
namespace output {

namespace {

const qint64 PatienceInMilliseconds = 1000;

}  // namespace

void Progress::Show(qint64 bytes, bool isOver) {
    if (isOver) {
        if (_isShown) {
            std::cerr << LineStart << std::flush;
        }
        _isShown = false;
        _timer.invalidate();
        return;
    }
    if (!_timer.isValid()) {
        _timer.start();
    }
    if (_timer.elapsed() >= PatienceInMilliseconds) {
        std::cerr << LineStart << "ovsync: " << bytes << " bytes received" << std::flush;
        _isShown = true;
    }
}

}  // namespace output
}  // namespace ovsync
