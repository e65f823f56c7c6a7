#include "client/library/RemoteFileManagerFactory.h"

#include <utility>

#include "dvsync/DrovaneRemoteFileManager.h"

namespace ovsync {
namespace library {

RemoteFileManagerFactory::RemoteFileManagerFactory(
    std::shared_ptr<sync::interf::IUrlBuilder> urlBuilder,
    std::shared_ptr<sync::interf::IRequestManager> requestManager,
    std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory,
    std::shared_ptr<sync::interf::factory::IHttpFactory> httpFactory,
    std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory)
    : _urlBuilder(std::move(urlBuilder)),
      _requestManager(std::move(requestManager)),
      _authenticatorFactory(std::move(authenticatorFactory)),
      _httpFactory(std::move(httpFactory)),
      _networkAccessManagerFactory(std::move(networkAccessManagerFactory)) {}

std::shared_ptr<sync::interf::IRemoteFileManager> RemoteFileManagerFactory::CreateRemoteFileManager(int serverKey) {
    return std::make_shared<sync::dv::dvsync::DrovaneRemoteFileManager>(_urlBuilder, _requestManager, serverKey,
                                                                        _authenticatorFactory, _httpFactory,
                                                                        _networkAccessManagerFactory, nullptr);
}

}  // namespace library
}  // namespace ovsync
