#pragma once

#include <QString>

namespace ovsync {
namespace store {

/// Of the open folder `descriptor`: differs for another folder, or another disk, at the same place, and is the same
/// after a restart of the system. Empty when the system does not tell; errno says why.
QString FolderIdentity(int descriptor);

}  // namespace store
}  // namespace ovsync
