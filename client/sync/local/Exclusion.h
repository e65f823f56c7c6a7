#pragma once

#include <QString>
#include <memory>

#include "host/interfaces/ISyncFilter.h"

namespace ovsync {
namespace local {

/// What of a synced folder is left alone on both sides. As thread-safe as the filter.
class Exclusion {
public:
    /// Null for nothing.
    explicit Exclusion(std::shared_ptr<sync::interf::ISyncFilter> filter);

    /// By its name alone: what lies in an excluded folder is excluded with it.
    bool HasFolder(const QString& name) const;
    bool HasFile(const QString& name) const;

    /// By all names of the path of a file.
    bool HasFileAt(const QString& path) const;
    bool HasFolderAt(const QString& path) const;

private:
    const std::shared_ptr<sync::interf::ISyncFilter> _filter;
};

}  // namespace local
}  // namespace ovsync
