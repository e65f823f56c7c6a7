#pragma once

#include <QString>

#include "client/sync/TrashTime.h"

namespace ovsync {
namespace syncing {

/// A file in the trash. A plain value.
struct TrashEntry {
    TrashTime from;
    /// Where it was, below the synced folder.
    QString path;
    qint64 size = 0;
};

}  // namespace syncing
}  // namespace ovsync
