#pragma once

#include <QString>

#include "client/store/FileRecord.h"

namespace ovsync {
namespace store {

/// The intention to put new content in the place of a file, or to take the file away. Written before anything is done,
/// so that a pass that comes after a crash can tell what was done. A plain value.
struct Placement {
    /// The temporary file: first the new content; later what was in its place. Below the synced folder.
    QString temporary;
    /// The target and what its record will be; for a removal the target's path alone.
    FileRecord record;
    bool isRemoval = false;
    /// What is to be replaced or removed; of size -1 when nothing is.
    Fingerprint old;
};

}  // namespace store
}  // namespace ovsync
