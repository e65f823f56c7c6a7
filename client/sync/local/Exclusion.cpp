#include "client/sync/local/Exclusion.h"

#include <algorithm>
#include <utility>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace local {

namespace {

// Tells a filter what asks; this client's filters do not look at it.
const int FilterKind = 2;

}  // namespace

Exclusion::Exclusion(std::shared_ptr<sync::interf::ISyncFilter> filter) : _filter(std::move(filter)) {}

bool Exclusion::HasFolder(const QString& name) const {
    return _filter && _filter->IsFolderExcluded(name, FilterKind);
}

bool Exclusion::HasFile(const QString& name) const {
    // Sizes differ between the sides, so that a filter by size would mean two things.
    return _filter && _filter->IsFileExcluded(name, 0, FilterKind);
}

bool Exclusion::HasFileAt(const QString& path) const {
    return _filter && (HasFile(NameOf(path)) || HasFolderAt(FolderOf(path)));
}

bool Exclusion::HasFolderAt(const QString& path) const {
    if (!_filter) {
        return false;
    }
    const QStringList names = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return std::any_of(names.begin(), names.end(), [this](const QString& name) { return HasFolder(name); });
}

}  // namespace local
}  // namespace ovsync
