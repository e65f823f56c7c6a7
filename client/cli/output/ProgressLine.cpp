#include "client/cli/output/ProgressLine.h"

#include <algorithm>

namespace ovsync {
namespace output {

namespace {

const int BarWidth = 24;

QByteArray DurationText(qint64 seconds) {
    if (seconds < 60) {
        return QByteArray::number(seconds) + " s";
    }
    return seconds < 3600 ? QByteArray::number(seconds / 60) + " min" : QByteArray::number(seconds / 3600) + " h";
}

}  // namespace

QByteArray ProgressLine(const report::SyncProgress& progress, std::chrono::milliseconds elapsed) {
    const qint64 all = std::max(progress.allBytes, progress.doneBytes);
    const double done = all > 0 ? static_cast<double>(progress.doneBytes) / static_cast<double>(all) : 1.0;
    const int filled = static_cast<int>(done * BarWidth);
    const double seconds = static_cast<double>(elapsed.count()) / 1000;
    const double rate = seconds > 0 ? static_cast<double>(progress.doneBytes) / seconds : 0;
    QByteArray line = '[' + QByteArray(filled, '=') + QByteArray(BarWidth - filled, ' ') + "] " +
                      QByteArray::number(progress.doneFiles) + '/' + QByteArray::number(progress.allFiles) +
                      " files, " + SizeText(progress.doneBytes) + " of " + SizeText(all) + ", " +
                      SizeText(static_cast<qint64>(rate)) + "/s";
    if (rate > 0) {
        line +=
            ", " + DurationText(static_cast<qint64>(static_cast<double>(all - progress.doneBytes) / rate)) + " left";
    }
    return line;
}

QByteArray SizeText(qint64 bytes) {
    if (bytes < 1024) {
        return QByteArray::number(bytes) + " B";
    }
    const char* const units[] = {"KiB", "MiB", "GiB", "TiB", "PiB"};
    double size = static_cast<double>(bytes) / 1024;
    size_t unit = 0;
    while (size >= 1024 && unit < 4) {
        size /= 1024;
        ++unit;
    }
    return QByteArray::number(size, 'f', 1) + ' ' + units[unit];
}

}  // namespace output
}  // namespace ovsync
