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
