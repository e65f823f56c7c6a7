#pragma once

#include <QString>
#include <QStringList>

#include "client/sync/local/Trash.h"
#include "client/sync/pass/DeletionLimit.h"

namespace ovsync {
namespace input {

/// What the command line says about a pass over a synced folder. A plain value.
struct SyncArguments {
    QString directory;
    QStringList excluded;
    bool deletes = false;
    bool isDryRun = false;
    bool isJson = false;
    int transfers = 4;
    bool isStrict = false;
    bool isForced = false;
    pass::DeletionLimit deletionLimit;
    int daysKept = local::Trash::DefaultDays;
};

}  // namespace input
}  // namespace ovsync
