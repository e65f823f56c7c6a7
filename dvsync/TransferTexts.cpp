#include "dvsync/TransferTexts.h"

namespace sync {
namespace dv {
namespace dvsync {

const QString SyncTempSuffix = QLatin1String(".{SyncTemp}");
const QString SyncBackupSuffix = QLatin1String(".{SyncBackup}");
const QString BaseMark = QLatin1String("BASE");
const QString TmpMark = QLatin1String("TMP");
const QString DeltaMark = QLatin1String("DELTA");

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
