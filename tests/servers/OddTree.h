#pragma once

#include "tests/servers/DavServer.h"
#include "tests/sync-proof/FolderImage.h"

namespace servers {

using syncproof::FolderImage;

/// 46 files in 23 folders, up to 8 folders deep, without the names that a server of that kind cannot store. Their names
/// have what clients and servers stumble over, and no two files have the same content.
FolderImage OddTree(ServerKind kind);

}  // namespace servers
