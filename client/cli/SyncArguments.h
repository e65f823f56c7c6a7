#pragma once

#include <QString>
#include <QStringList>

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
};

}  // namespace cli
}  // namespace ovsync
