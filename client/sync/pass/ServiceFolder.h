#pragma once

#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

#include "client/changes/IChangeSource.h"
#include "client/content/IContentConnection.h"
#include "client/wire/FileAttributes.h"
#include "host/configuration/FolderConfiguration.h"
#include "host/core/SyncException.h"
#include "host/interfaces/ICustomFileConfigUpdater.h"
#include "host/interfaces/IRemoteFileManager.h"
#include "host/interfaces/IRemoteFolderManager.h"

namespace ovsync {
namespace pass {

/// The service's side of a pass: the library, which is only ever called on the pass's thread, and what transfers
/// content. Does not own the library's objects. A plain value.
struct ServiceFolder {
    sync::interf::IRemoteFolderManager* folders = nullptr;
    sync::interf::IRemoteFileManager* files = nullptr;
    sync::interf::ICustomFileConfigUpdater* updater = nullptr;
    /// Lists the files of a folder by one request. `files` and `updater` answer from that, until it is forgotten.
    /// Returns how many there are. Throws what the library throws.
    std::function<int(const sync::config::FolderConfiguration& folder)> keepListing;
    std::function<void()> forgetListings;
    /// Tells what changed in the folder to sync; null where nobody does.
    std::shared_ptr<changes::IChangeSource> changes;
    /// A session for one thread.
    std::function<std::unique_ptr<content::IContentConnection>()> newConnection;
    /// The URL of a server path; empty when there is none for it.
    std::function<QUrl(const QString& serverPath)> urlOf;
    /// Moves a file from one server path to another one, at which nothing may be. Throws HttpException, of status 412
    /// when something is, and TransactionError.
    std::function<void(const QString& from, const QString& to)> moveFile;
    /// As the last listing of the file at a server path said.
    std::function<wire::FileAttributes(const QString& serverPath)> attributesOf;
    /// Makes the folder to sync. Throws FolderMissing when there is none that it could lie in, and what the library
    /// throws.
    std::function<void()> make;
    /// Throws FolderMissing as that would, and makes nothing.
    std::function<void()> requirePlace;
    /// Whether nothing at all lies in the collection at a server path, also of what the library lists nowhere. Throws
    /// what the library throws.
    std::function<bool(const QString& serverPath)> isEmpty;
    /// Names the folder to sync, and no other: its URL in one spelling.
    QString address;
    /// Who logs in there; empty for nobody.
    QString user;
    /// The file of certificates that was named; may be empty.
    QString caFile;
    /// Its server path is that of the folder to sync, its local path that of the synced folder.
    sync::config::FolderConfiguration folder;

    /// The server path of what lies at `path` below the folder.
    QString ServerPath(const QString& path) const;
    /// The path below the folder of what lies at `serverPath`; empty when that is not below it.
    QString PathBelow(const QString& serverPath) const;
    /// The record from which the library works on the folder at `path` below the folder.
    sync::config::FolderConfiguration FolderAt(const QString& path) const;
    /// Of the content of the file at `path` below the folder; empty when there is none for it.
    QUrl UrlAt(const QString& path) const { return urlOf(ServerPath(path)); }
    /// Asks the service for the file at `path` below the folder. Throws what the library throws.
    sync::config::FileConfiguration FileAt(const QString& path) const;
};

/// What was named cannot be synced: it is no folder of the service, or the local folder is in step with another one.
/// The message says so.
class WrongFolder : public sync::core::SyncException {
public:
    using SyncException::SyncException;

    static WrongFolder OfFile(const QString& serverPath) {
        return WrongFolder(QStringLiteral("\"%1\" is a file, and only folders can be synced").arg(serverPath));
    }
};

}  // namespace pass
}  // namespace ovsync
