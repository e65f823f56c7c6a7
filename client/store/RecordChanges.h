#pragma once

#include <QList>
#include <QStringList>
#include <QVector>

#include "client/store/ConflictCopy.h"
#include "client/store/FileRecord.h"

namespace ovsync {
namespace store {

/// What is to be changed in the records, all of it or nothing. A plain value.
struct RecordChanges {
    /// Where two are of one path, the later one counts.
    QVector<FileRecord> files;
    QStringList folders;
    QStringList forgottenFiles;
    QStringList forgottenFolders;
    QList<ConflictCopy> forgottenCopies;
};

}  // namespace store
}  // namespace ovsync
