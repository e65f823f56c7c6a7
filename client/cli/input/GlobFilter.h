#pragma once

#include <QRegularExpression>
#include <QStringList>
#include <QVector>

#include "host/interfaces/ISyncFilter.h"

namespace ovsync {
namespace input {

/// Excludes files and folders by globs: '*' stands for any characters, '?' for one, [...] for one of several and [!...]
/// for one of all others. A glob has to match the whole name, in its letter case. Thread-safe.
class GlobFilter : public sync::interf::ISyncFilter {
public:
    /// Throws UsageError for a glob that is empty, has a '/', which no name has, or cannot be read.
    explicit GlobFilter(const QStringList& globs);

    bool IsFileExcluded(const QString& name, qint64 size, int kind) override;
    /// An empty component is never excluded.
    bool IsFolderExcluded(const QString& pathComponent, int kind) override;

private:
    bool _Matches(const QString& name) const;

    QVector<QRegularExpression> _globs;
};

}  // namespace input
}  // namespace ovsync
