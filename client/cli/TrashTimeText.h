#pragma once

#include <QByteArray>
#include <QString>

#include "client/sync/TrashTime.h"

namespace ovsync {
namespace cli {

/// "2026-11-20T10:15:30Z", and "2026-11-20T10:15:30Z-2" where that second needed a second folder. Thread-safe.
QByteArray TrashTimeText(const syncing::TrashTime& time);

/// Reads what TrashTimeText made. Throws UsageError when it is something else.
syncing::TrashTime ReadTrashTime(const QString& text);

}  // namespace cli
}  // namespace ovsync
