#pragma once

#include <memory>

#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/factory/IHttpFactory.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"
#include "host/interfaces/factory/IRemoteFileManagerFactory.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace library {

/// Makes the library's file managers, all of them with the same collaborators. A server key is a server id here.
///
/// \code
/// #include "client/library/NetworkAccessManagerFactory.h"
/// #include "client/library/RequestAuthenticatorFactory.h"
/// #include "client/requests/AccountConnection.h"
/// #include "client/requests/HttpFactory.h"
/// #include "client/requests/RequestManager.h"
/// #include "client/requests/UrlBuilder.h"
///
/// // After ConfigurationFactory::Install.
/// const int serverId = 1;
/// const QUrl accountUrl(QStringLiteral("http://localhost:8080"));
/// const auto authenticators = std::make_shared<ovsync::library::RequestAuthenticatorFactory>(QString(), QString());
/// const auto connection = std::make_shared<ovsync::requests::AccountConnection>(
///     ovsync::wire::ConnectionSettings(), authenticators->CreateAuthenticator(serverId));
/// ovsync::library::RemoteFileManagerFactory fileManagers(
///     std::make_shared<ovsync::requests::UrlBuilder>(),
///     std::make_shared<ovsync::requests::RequestManager>(connection), authenticators,
///     std::make_shared<ovsync::requests::HttpFactory>(connection),
///     std::make_shared<ovsync::library::NetworkAccessManagerFactory>(authenticators, serverId, accountUrl));
/// const std::shared_ptr<sync::interf::IRemoteFileManager> files = fileManagers.CreateRemoteFileManager(serverId);
/// \endcode
class RemoteFileManagerFactory : public sync::interf::factory::IRemoteFileManagerFactory {
public:
    RemoteFileManagerFactory(
        std::shared_ptr<sync::interf::IUrlBuilder> urlBuilder,
        std::shared_ptr<sync::interf::IRequestManager> requestManager,
        std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory,
        std::shared_ptr<sync::interf::factory::IHttpFactory> httpFactory,
        std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory);

    std::shared_ptr<sync::interf::IRemoteFileManager> CreateRemoteFileManager(int serverKey) override;

private:
    const std::shared_ptr<sync::interf::IUrlBuilder> _urlBuilder;
    const std::shared_ptr<sync::interf::IRequestManager> _requestManager;
    const std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> _authenticatorFactory;
    const std::shared_ptr<sync::interf::factory::IHttpFactory> _httpFactory;
    const std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory> _networkAccessManagerFactory;
};

}  // namespace library
}  // namespace ovsync
