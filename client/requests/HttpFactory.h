#pragma once

#include <QMap>
#include <QUrl>
#include <memory>

#include "client/requests/IRequestSender.h"
#include "client/wire/ConnectionSettings.h"
#include "host/interfaces/factory/IHttpFactory.h"

namespace ovsync {
namespace requests {

/// Makes the requests that a RequestManager or a RequestExecutor executes. Every operation throws SyncException when a
/// URL is empty or no http or https URL. The requests for folders add the '/' that the URL of a collection ends in.
/// Not thread-safe.
///
/// \code
/// #include <iostream>
/// #include "client/requests/AccountConnection.h"
/// #include "client/requests/RequestManager.h"
///
/// const auto connection = std::make_shared<ovsync::requests::AccountConnection>(ovsync::wire::ConnectionSettings(),
///                                                                               QAuthenticator());
/// ovsync::requests::HttpFactory requests(connection);
/// ovsync::requests::RequestManager sender(connection);
/// const auto folder = std::make_shared<QUrl>(QStringLiteral("http://localhost:8080/Projects/"));
/// const auto request = requests.CreatePropfindRequest(folder, 1, sync::http::DAVPropfindRequest::Children);
/// sender.Execute({request});  // throws when there is no whole answer
/// if (const auto listing = request->GetResult()) {
///     std::cout << listing->fileResponses.size() << " files\n";
/// }
/// \endcode
class HttpFactory : public sync::interf::factory::IHttpFactory {
public:
    /// The executors of an account share one AccountConnection, which the first of them makes. Later ones do not ask
    /// their authenticator factory for anything.
    explicit HttpFactory(const wire::ConnectionSettings& settings = wire::ConnectionSettings());
    /// All executors use `sender`, whatever their account.
    explicit HttpFactory(std::shared_ptr<IRequestSender> sender);

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
    /// Moves a folder to where nothing may be.
    std::shared_ptr<sync::interf::IHttpRequest> CreateMoveRequest(std::shared_ptr<QUrl> source,
                                                                  std::shared_ptr<QUrl> destination,
                                                                  int serverId) override;
    std::shared_ptr<sync::interf::IRequestExecutor> CreateRequestExecutor(
        int serverId,
        std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory) override;

private:
    const wire::ConnectionSettings _settings;
    const std::shared_ptr<IRequestSender> _sender;
    QMap<int, std::shared_ptr<IRequestSender>> _senders;
};

}  // namespace requests
}  // namespace ovsync
