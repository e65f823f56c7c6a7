#pragma once

#include <QObject>
#include <QUrl>
#include <memory>

#include "host/configuration/FolderConfiguration.h"
#include "host/core/OvSyncExport.h"
#include "host/interfaces/IHttpRequest.h"
#include "host/interfaces/IRequestExecutor.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace sync {
namespace http {
class DAVPropfindRequest;
}  // namespace http
}  // namespace sync

namespace sync {
namespace interf {
namespace factory {

/// Makes requests, and what executes them. Requests are not sent before they are executed.
class OVSYNC_INTERFACES_EXPORT IHttpFactory : public QObject {
    Q_OBJECT

public:
    /// What a request for a folder does. The values are part of the contract.
    enum FolderRequestKind { FolderQuery = 2, FolderCreation = 3, FolderDeletion = 6 };

    /// A PROPFIND of `url`. `serverId` is the one of the record that the request is made for, `depth` a
    /// DAVPropfindRequest::Depth.
    virtual std::shared_ptr<http::DAVPropfindRequest> CreatePropfindRequest(std::shared_ptr<QUrl> url, int serverId,
                                                                            int depth) = 0;

    /// A request of the kind `kind`, a FolderRequestKind, for `folder` at `url`.
    virtual std::shared_ptr<IHttpRequest> CreateFolderRequest(int kind, std::shared_ptr<QUrl> url,
                                                              const config::FolderConfiguration& folder) = 0;

    /// A request that asks whether there is a file at `url`. `serverId` is the one of the file's record, `options` is
    /// 0.
    virtual std::shared_ptr<IHttpRequest> CreateFileRequest(std::shared_ptr<QUrl> url, int serverId, int options) = 0;

    /// A request that moves what is at `source` to `destination`.
    virtual std::shared_ptr<IHttpRequest> CreateMoveRequest(std::shared_ptr<QUrl> source,
                                                            std::shared_ptr<QUrl> destination, int serverId) = 0;

    /// What executes a list of requests with the credentials of the account `serverId`.
    virtual std::shared_ptr<IRequestExecutor> CreateRequestExecutor(
        int serverId, std::shared_ptr<IRequestAuthenticatorFactory> authenticatorFactory) = 0;
};

}  // namespace factory
}  // namespace interf
}  // namespace sync
