#include "dvsync/Exclusion.h"

#include <QStringList>
#include <utility>

namespace sync {
namespace dv {
namespace dvsync {

namespace {

// Tells a filter that a remote folder is being measured.
const int FilterKind = 2;

}  // namespace

bool IsFolderPathExcluded(std::shared_ptr<interf::ISyncFilter> folderFilter, const QString& path) {
    if (path.isEmpty()) {
        return false;
    }
    const QStringList components = path.split(QLatin1Char('/'));
    for (const QString& component : components) {
        if (folderFilter->IsFolderExcluded(component, FilterKind)) {
            return true;
        }
    }
    return false;
}

bool IsFileExcluded(std::shared_ptr<interf::ISyncFilter> fileFilter, std::shared_ptr<interf::ISyncFilter> folderFilter,
                    const QString& relativePath, qint64 size) {
    const int nameStart = relativePath.lastIndexOf(QLatin1Char('/')) + 1;
    if (IsFolderPathExcluded(std::move(folderFilter), relativePath.left(nameStart))) {
        return true;
    }
    return fileFilter->IsFileExcluded(relativePath.mid(nameStart), size, FilterKind);
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
