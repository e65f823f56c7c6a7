#pragma once

#include "client/sync/RemoteTree.h"
#include "client/sync/ServiceFolder.h"

namespace ovsync {
namespace syncing {

/// Throws SyncException when the listing of a tree does not have all of it: some servers are asked for a whole tree and
/// list its upper levels, without a word. Asks for what lies in the folders of the lowest level that show nothing,
/// unless the server is known to be the service. Throws what the library throws, too.
void RequireWholeTree(const ServiceFolder& service, const RemoteTree& remote);

}  // namespace syncing
}  // namespace ovsync
