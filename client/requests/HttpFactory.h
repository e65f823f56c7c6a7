#pragma once

#include <QUrl>
#include <memory>

#include "client/requests/AccountConnections.h"
#include "host/interfaces/factory/IHttpFactory.h"

namespace ovsync {
namespace requests {

/// Makes the requests that a RequestManager or a RequestExecutor executes. Every operation throws SyncException when a
/// URL is empty or no http or https URL. The requests for folders add the '/' that the URL of a collection ends in.
/// Not thread-safe.
class HttpFactory : public sync::interf::factory::IHttpFactory {
public:
    /// The executors use `sessions`.
    explicit HttpFactory(const std::shared_ptr<AccountConnections>& sessions);

    /// A `depth` of Children or Tree adds the '/' as well. Throws SyncException when `depth` is not a
    /// DAVPropfindRequest::Depth.
    std::shared_ptr<sync::http::DAVPropfindRequest> CreatePropfindRequest(std::shared_ptr<QUrl> url, int serverId,
                                                                          int depth) override;
    /// Throws SyncException when `kind` is not a FolderRequestKind. A query for a folder with a server folder id takes
    /// `url` for one made of that id.
    std::shared_ptr<sync::interf::IHttpRequest> CreateFolderRequest(
        int kind, std::shared_ptr<QUrl> url, const sync::config::FolderConfiguration& folder) override;
    std::shared_ptr<sync::interf::IHttpRequest> CreateFileRequest(std::shared_ptr<QUrl> url, int serverId,
                                                                  int options) override;
    /// Moves a folder.
    std::shared_ptr<sync::interf::IHttpRequest> CreateMoveRequest(std::shared_ptr<QUrl> source,
                                                                  std::shared_ptr<QUrl> destination,
                                                                  int serverId) override;
    /// Every executor of an account uses the same session.
    std::shared_ptr<sync::interf::IRequestExecutor> CreateRequestExecutor(
        int serverId,
        std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory) override;

private:
    const std::shared_ptr<AccountConnections> _sessions;
};

}  // namespace requests
}  // namespace ovsync
