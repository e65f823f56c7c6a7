#pragma once

#include <QString>

#include "dvsync/DvsyncExport.h"

/// What marks the files that a host makes while it transfers others. The library reads none of them. Thread-safe.

namespace sync {
namespace dv {
namespace dvsync {

/// ".{SyncTemp}": ends the name of a file that is not complete yet.
extern DVSYNC_EXPORT const QString SyncTempSuffix;
/// ".{SyncBackup}": ends the name under which the file to be replaced is kept.
extern DVSYNC_EXPORT const QString SyncBackupSuffix;

/// "BASE": the file that a difference starts from.
extern DVSYNC_EXPORT const QString BaseMark;
/// "TMP": the file being put together.
extern DVSYNC_EXPORT const QString TmpMark;
/// "DELTA": the difference itself.
extern DVSYNC_EXPORT const QString DeltaMark;

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
