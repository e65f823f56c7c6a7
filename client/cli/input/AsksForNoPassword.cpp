#include "client/cli/input/AsksForNoPassword.h"

#include "client/library/ServiceConnection.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace input {

bool AsksForNoPassword(const Location& location, const wire::ConnectionSettings& settings) {
    try {
        library::ServiceConnection connection(location.baseUrl, QAuthenticator(), settings);
        sync::config::FolderConfiguration found;
        connection.Folders().GetFolderProperties(connection.Folder(location.serverPath), found);
        return true;
    } catch (const sync::core::SyncException&) {
        return false;
    }
}

}  // namespace input
}  // namespace ovsync
