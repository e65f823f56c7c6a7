#include "client/cli/input/GlobFilter.h"

#include <algorithm>

#include "client/cli/input/UsageError.h"

namespace ovsync {
namespace input {

GlobFilter::GlobFilter(const QStringList& globs) {
    for (const QString& glob : globs) {
        if (glob.isEmpty() || glob.contains(QLatin1Char('/'))) {
            throw UsageError(
                QStringLiteral("--exclude \"%1\": a glob is matched against single names, and none is like that")
                    .arg(glob));
        }
        const QRegularExpression expression(QRegularExpression::wildcardToRegularExpression(glob));
        if (!expression.isValid()) {
            throw UsageError(
                QStringLiteral("--exclude \"%1\": this is no glob: %2").arg(glob, expression.errorString()));
        }
        _globs.append(expression);
    }
}

bool GlobFilter::IsFileExcluded(const QString& name, qint64 /*size*/, int /*kind*/) {
    return _Matches(name);
}

bool GlobFilter::IsFolderExcluded(const QString& pathComponent, int /*kind*/) {
    return !pathComponent.isEmpty() && _Matches(pathComponent);
}

bool GlobFilter::_Matches(const QString& name) const {
    return std::any_of(_globs.begin(), _globs.end(),
                       [&name](const QRegularExpression& glob) { return glob.match(name).hasMatch(); });
}

}  // namespace input
}  // namespace ovsync
