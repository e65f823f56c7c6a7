#include "client/cli/input/AbsolutePath.h"

#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "client/cli/input/UsageError.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace input {

namespace {

struct Freer {
    void operator()(char* text) const { std::free(text); }
};

}  // namespace

QString AbsolutePath(const QString& directory) {
    if (directory.isEmpty()) {
        throw UsageError(QStringLiteral("no folder is named here: \"\" is empty"));
    }
    const std::unique_ptr<char, Freer> path(realpath(directory.toUtf8().constData(), nullptr));
    if (!path) {
        const int code = errno;
        const QString above = QFileInfo(QDir::cleanPath(directory)).path();
        throw UsageError(code == ENOENT && !QFileInfo::exists(above)
                             ? QStringLiteral("%1: there is no folder \"%2\" here").arg(directory, above)
                             : QStringLiteral("%1: %2").arg(directory, QString::fromLocal8Bit(std::strerror(code))));
    }
    return QString::fromUtf8(path.get());
}

void RequireSyncable(const QString& directory) {
    const QFileInfo place(QDir::cleanPath(directory));
    // Without links, as far as it is there.
    const QString path =
        place.exists() ? AbsolutePath(directory) : QDir(AbsolutePath(place.path())).filePath(place.fileName());
    const QString reason = local::ReasonAgainstRoot(path);
    if (!reason.isEmpty()) {
        throw UsageError(QStringLiteral("\"%1\" cannot be synced: %2").arg(directory, reason));
    }
}

}  // namespace input
}  // namespace ovsync
