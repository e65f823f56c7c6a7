#pragma once

#include <QtGlobal>

namespace ovsync {
namespace report {

/// How far the transfers of a pass have come. A plain value.
struct SyncProgress {
    int doneFiles = 0;
    int allFiles = 0;
    qint64 doneBytes = 0;
    qint64 allBytes = 0;
};

}  // namespace report
}  // namespace ovsync
