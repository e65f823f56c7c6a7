#include "client/cli/offline/SyncedFolder.h"

#include <QFileInfo>

#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/UsageError.h"
#include "client/store/RecordDatabase.h"

namespace ovsync {
namespace offline {

using store::RecordDatabase;

QString SyncedFolder(const QString& directory) {
    QString root = input::AbsolutePath(directory);
    const QFileInfo hidden(root + QLatin1Char('/') + RecordDatabase::HiddenFolder());
    if (!hidden.isDir() || hidden.isSymLink()) {
        throw input::UsageError(QStringLiteral("%1 is no synced folder: it has no folder \"%2\" in it")
                                    .arg(directory, RecordDatabase::HiddenFolder()));
    }
    return root;
}

}  // namespace offline
}  // namespace ovsync
