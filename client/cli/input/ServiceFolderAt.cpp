#include "client/cli/input/ServiceFolderAt.h"

#include "client/cli/input/MakeAt.h"

namespace ovsync {
namespace input {

using library::ServiceConnection;

pass::ServiceFolder ServiceFolderAt(ServiceConnection& connection, const Location& location, const QString& root) {
    pass::ServiceFolder service;
    service.folder = connection.Folder(location.serverPath);
    service.folder.localPath = root;
    service.address = location.Address();
    service.user = connection.Credentials().user();
    service.folders = &connection.Folders();
    service.files = &connection.Files();
    service.keepListing = [&connection](const sync::config::FolderConfiguration& folder) {
        return connection.Files().Keep(folder);
    };
    service.forgetListings = [&connection] { connection.Files().Forget(); };
    service.newConnection = [&connection] { return connection.NewContentConnection(); };
    service.attributesOf = [&connection](const QString& serverPath) { return connection.AttributesOf(serverPath); };
    service.moveFile = [&connection](const QString& from, const QString& to) {
        connection.NewResourceConnection()->Move(connection.UrlOf(from), connection.UrlOf(to),
                                                 content::ResourceConnection::Overwriting::No);
    };
    service.make = [&connection, location, folder = service.folder] {
        MakeAt(connection, location, [&] {
            sync::config::FolderConfiguration made = folder;
            connection.Folders().CreateFolder(made, QString(), false);
        });
    };
    service.requirePlace = [&connection, location] { RequireFolderAbove(connection, location); };
    service.isEmpty = [&connection](const QString& serverPath) { return connection.IsEmpty(serverPath); };
    service.changes = connection.NewChangeSource(location.serverPath);
    service.urlOf = [&connection](const QString& serverPath) { return connection.UrlOf(serverPath); };
    return service;
}

}  // namespace input
}  // namespace ovsync
