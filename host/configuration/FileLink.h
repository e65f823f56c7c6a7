#pragma once

#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace config {

/// A link from one synced file to another, as found in the file's content. A plain value.
class OVSYNC_CONFIGURATION_EXPORT FileLink {
public:
    FileLink();
    FileLink(const FileLink& other);
    FileLink& operator=(const FileLink& other);
    ~FileLink();

    /// As it stands in the file: absolute, or relative to the file's directory.
    QString path;
    /// The item id of the file that the link leads to; empty until it is known.
    QString targetId;
};

}  // namespace config
}  // namespace sync
