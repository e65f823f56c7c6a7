#pragma once

#include <QString>

#include "client/sync/local/TrashTime.h"

namespace ovsync {
namespace local {

/// A file in the trash. A plain value.
struct TrashEntry {
    TrashTime from;
    /// Where it was, below the synced folder.
    QString path;
    qint64 size = 0;
};

}  // namespace local
}  // namespace ovsync
