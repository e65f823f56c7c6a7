// The smallest host: it lists a folder of a service and, when it is told to, creates a folder in it first.
//
//     minimal-host http://host:8080 Projects/Bridge [NEW]
//
// The user and the password come from ~/.netrc. Exits with 0 when it is done, 1 when the service said no, 2 on wrong
// usage and 3 when the service could not be reached or understood.
#include <log4cplus/configurator.h>
#include <log4cplus/initializer.h>

#include <QCoreApplication>
#include <QStringList>
#include <QUrl>
#include <iostream>

#include "client/library/Netrc.h"
#include "client/library/ServiceConnection.h"
#include "host/core/SyncException.h"
#include "host/http/HttpException.h"

namespace {

using ovsync::library::ServiceConnection;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

const int NotFound = 404;

/// What the service says of a folder, its id above all: folders are created and deleted by id.
FolderConfiguration FindFolder(ServiceConnection& service, const QString& serverPath) {
    FolderConfiguration found;
    if (!service.Folders().GetFolderProperties(service.Folder(serverPath), found)) {
        throw sync::http::HttpException(QStringLiteral("There is no folder \"%1\"").arg(serverPath), NotFound, QUrl());
    }
    return found;
}

void CreateFolder(ServiceConnection& service, const QString& parentPath, const QString& name) {
    const FolderConfiguration parent = FindFolder(service, parentPath);
    FolderConfiguration folder = service.Folder(parentPath.isEmpty() ? name : parentPath + QLatin1Char('/') + name);
    // A folder that is there already is no failure. The library writes the new folder's id into the record.
    service.Folders().CreateFolder(folder, parent.getServerFolderId(), false);
    std::cout << "created " << folder.name.toStdString() << ", id " << folder.getServerFolderId().toStdString() << '\n';
}

void ListFolder(ServiceConnection& service, const QString& serverPath) {
    FolderConfiguration folder = service.Folder(serverPath);
    // Without a folder the library throws here. The pointer is empty only where a folder's last sync time is set and
    // nothing changed since.
    const auto folders = service.Folders().GetNameSortedDirsByFolder(folder);
    for (const FolderConfiguration& below : *folders) {
        std::cout << below.name.toStdString() << "/\n";
    }
    std::shared_ptr<QVector<FileConfiguration>> files;
    // Somebody may have deleted the folder between the two requests.
    if (service.Files().GetNameSortedFilesByFolder(folder, files) == NotFound) {
        throw sync::http::HttpException(QStringLiteral("There is no folder \"%1\"").arg(serverPath), NotFound, QUrl());
    }
    for (const FileConfiguration& file : *files) {
        std::cout << file.name.toStdString() << '\n';
    }
}

int Complain(const sync::core::SyncException& error, int exitCode) {
    std::cerr << "minimal-host: " << error.Utf8Message() << '\n';
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    // The library logs by log4cplus, which the host sets up: here everything goes to standard error.
    const log4cplus::Initializer logging;
    log4cplus::BasicConfigurator::doConfigure(log4cplus::Logger::getDefaultHierarchy(), true);
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.size() < 2 || arguments.size() > 3) {
        std::cerr << "Usage: minimal-host URL FOLDER [NEW]\n";
        return 2;
    }
    try {
        const QUrl url(arguments[0]);
        ServiceConnection service(url, ovsync::library::NetrcCredentials(url.host()));
        if (arguments.size() == 3) {
            CreateFolder(service, arguments[1], arguments[2]);
        }
        ListFolder(service, arguments[1]);
        return 0;
    } catch (const sync::http::HttpException& error) {
        // An answer came, and it is a failure.
        return Complain(error, 1);
    } catch (const sync::core::SyncException& error) {
        // No answer came, or one that cannot be taken for a listing: never a shorter listing.
        return Complain(error, 3);
    }
}
