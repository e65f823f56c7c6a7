#pragma once

#include <QVector>

#include "client/sync/pass/ServiceFolder.h"
#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace pass {

/// Throws SyncException when the listing of a tree does not have all of it: some servers are asked for a whole tree and
/// list its upper levels, without a word. Asks for what lies in the folders of the lowest level that show nothing,
/// unless the server is known to be the service. Throws what the library throws, too. A listing of nothing at all
/// passes: that everything is gone has other guards.
void RequireWholeTree(const ServiceFolder& service, const QVector<sync::config::FolderConfiguration>& folders,
                      const QVector<sync::config::FileConfiguration>& files);

}  // namespace pass
}  // namespace ovsync
