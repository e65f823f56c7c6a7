#pragma once

#include <QString>
#include <memory>

#include "host/interfaces/ISyncFilter.h"

/// What the filters of a sync engine leave out. Exceptions of a filter pass through. As thread-safe as the filter.

namespace sync {
namespace dv {
namespace dvsync {

/// Whether `folderFilter` excludes a component of `path`; they are asked from the first on, empty ones too, until one
/// is. An empty path has no components.
bool IsFolderPathExcluded(std::shared_ptr<interf::ISyncFilter> folderFilter, const QString& path);

/// Whether `folderFilter` excludes the directory of `relativePath`, or else `fileFilter` the file itself. `size` is in
/// bytes.
bool IsFileExcluded(std::shared_ptr<interf::ISyncFilter> fileFilter, std::shared_ptr<interf::ISyncFilter> folderFilter,
                    const QString& relativePath, qint64 size);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
