#pragma once

#include <QSet>
#include <QString>

#include "client/store/RecordDatabase.h"
#include "client/sync/local/Exclusion.h"
#include "client/sync/local/LocalSnapshot.h"

namespace ovsync {
namespace part {

/// The paths of all files and folders that are not as they are recorded: new, changed, or gone.
QSet<QString> ChangedHere(store::RecordDatabase& records, const local::Exclusion& exclusion,
                          const local::LocalSnapshot& snapshot);

}  // namespace part
}  // namespace ovsync
