#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <memory>

#include "host/configuration/FolderConfiguration.h"
#include "host/configuration/ServerConfiguration.h"
#include "host/core/OvSyncExport.h"

namespace sync {
namespace interf {

/// Builds the URLs of a service.
class OVSYNC_INTERFACES_EXPORT IUrlBuilder : public QObject {
    Q_OBJECT

public:
    /// What a folder's URL is for. The values are part of the contract.
    enum FolderUrlKind {
        /// The folder by its server folder id.
        FolderById = 10,
        /// The folder by its server path.
        FolderByPath = 11,
        /// Where to create the folder: under its name in the folder whose id stands in the place of the file name, or,
        /// where that id is empty, at its server path.
        FolderCreation = 12,
        /// Where to delete the folder.
        FolderDeletion = 13
    };

    /// The URL of the resource at the decoded path `serverPath`; empty when there can be none.
    virtual std::shared_ptr<QUrl> BuildUrl(const config::ServerConfiguration& server, const QString& serverPath) = 0;

    /// A URL of `folder` for the purpose `urlKind`, a FolderUrlKind; empty when there can be none.
    virtual std::shared_ptr<QUrl> BuildFolderUrl(const config::ServerConfiguration& server,
                                                 const config::FolderConfiguration& folder, const QString& fileName,
                                                 int urlKind) = 0;
};

}  // namespace interf
}  // namespace sync
