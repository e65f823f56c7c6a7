#pragma once

#include <QByteArray>
#include <chrono>

#include "client/sync/report/ISyncObserver.h"

namespace ovsync {
namespace output {

/// Takes back the line that the cursor of a terminal is on.
const char* const LineStart = "\r\x1B[K";

/// How far transfers have come after `elapsed`, in one line: a bar, files, bytes, the rate and the time left.
QByteArray ProgressLine(const report::SyncProgress& progress, std::chrono::milliseconds elapsed);

/// For people: "999 B", "1.5 KiB".
QByteArray SizeText(qint64 bytes);

}  // namespace output
}  // namespace ovsync
