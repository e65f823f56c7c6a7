#include "client/library/DrovaneHttp.h"

#include "client/requests/UrlBuilder.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

using requests::UrlBuilder;

namespace {

QUrl ServiceUrl(const sync::config::ServerConfiguration& server) {
    const std::shared_ptr<QUrl> url = UrlBuilder().BuildUrl(server, QString());
    if (!url) {
        throw sync::core::SyncException(QStringLiteral("A service needs an http or https URL, not \"%1\"")
                                            .arg(server.baseUrl.toString(QUrl::RemoveUserInfo)));
    }
    return *url;
}

}  // namespace

DrovaneHttp::DrovaneHttp(const sync::config::ServerConfiguration& server) : _serviceUrl(ServiceUrl(server)) {}

std::shared_ptr<QUrl> DrovaneHttp::GetServiceUrl() {
    return std::make_shared<QUrl>(_serviceUrl);
}

std::shared_ptr<QUrl> DrovaneHttp::GetSyncConfigUrl() {
    return std::make_shared<QUrl>(_serviceUrl.resolved(QUrl(QStringLiteral(".ovs/sync-config.xml"))));
}

}  // namespace library
}  // namespace ovsync
