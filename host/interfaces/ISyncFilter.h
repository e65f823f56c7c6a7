#pragma once

#include <QObject>
#include <QString>

#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// Says what is left out of synchronisation. The order of the operations is part of the contract.
class OVSYNC_INTERFACES_EXPORT ISyncFilter : public QObject {
    Q_OBJECT

public:
    /// Whether the file is to be left out. `size` is in bytes; `kind` says what asks and is passed through by a
    /// library.
    virtual bool IsFileExcluded(const QString& name, qint64 size, int kind) = 0;

    /// Whether a folder is to be left out, by one component of its path.
    virtual bool IsFolderExcluded(const QString& pathComponent, int kind) = 0;
};

}  // namespace interf
}  // namespace sync
