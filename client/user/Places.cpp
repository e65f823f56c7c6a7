#include "client/user/Places.h"

#include <sys/stat.h>

#include <QDir>
#include <QFileInfo>
#include <cerrno>

#include "client/sync/local/LocalError.h"

namespace ovsync {
namespace user {

namespace {

const mode_t ForThisUser = 0700;

QString BaseFolder(const char* variable) {
    const QString path = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(path) ? path : QString();
}

QString FolderIn(const QString& base) {
    return QDir::cleanPath(base + QLatin1String("/ovsync"));
}

QString Either(const QString& base, const char* belowHome) {
    return base.isEmpty() ? QDir::homePath() + QLatin1String(belowHome) : base;
}

}  // namespace

QString FoldersFilePath() {
    return FolderIn(Either(BaseFolder("XDG_CONFIG_HOME"), "/.config")) + QLatin1String("/folders.toml");
}

QString StateFolder() {
    return FolderIn(Either(BaseFolder("XDG_STATE_HOME"), "/.local/state"));
}

QString RuntimeFolder() {
    const QString base = BaseFolder("XDG_RUNTIME_DIR");
    return base.isEmpty() ? StateFolder() : FolderIn(base);
}

void MakePrivateFolder(const QString& path) {
    const QFileInfo folder(path);
    if (folder.isDir()) {
        return;
    }
    if (!folder.isRoot()) {
        MakePrivateFolder(folder.path());
    }
    if (mkdir(path.toUtf8().constData(), ForThisUser) != 0 && errno != EEXIST) {
        throw local::LocalError(path, errno);
    }
}

}  // namespace user
}  // namespace ovsync
