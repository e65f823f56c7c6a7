#pragma once

#include <QString>
#include <QStringList>

#include "client/sync/DeletionLimit.h"
#include "client/sync/Trash.h"

namespace ovsync {
namespace cli {

/// What the command line says about a pass over a synced folder. A plain value.
struct SyncArguments {
    QString directory;
    QStringList excluded;
    bool deletes = false;
    bool isTrial = false;
    bool isJson = false;
    int transfers = 4;
    bool isStrict = false;
    syncing::DeletionLimit deletionLimit;
    int daysKept = syncing::Trash::DefaultDays;
};

}  // namespace cli
}  // namespace ovsync
