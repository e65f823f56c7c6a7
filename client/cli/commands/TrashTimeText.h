#pragma once

#include <QByteArray>
#include <QString>

#include "client/sync/local/TrashTime.h"

namespace ovsync {
namespace commands {

/// "2026-11-20T10:15:30Z", and "2026-11-20T10:15:30Z-2" where that second needed a second folder. Thread-safe.
QByteArray TrashTimeText(const local::TrashTime& time);

/// Reads what TrashTimeText made. Throws UsageError when it is something else.
local::TrashTime ReadTrashTime(const QString& text);

}  // namespace commands
}  // namespace ovsync
