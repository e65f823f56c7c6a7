#include "client/requests/ServerCapabilities.h"

#include "client/requests/OptionsRequest.h"

namespace ovsync {
namespace requests {

using wire::HttpConnection;

namespace {

ServerKind KindOf(const OptionsRequest& answered) {
    const bool isSuccess = answered.StatusCode() >= 200 && answered.StatusCode() < 300;
    if (!isSuccess || answered.DavTokens().isEmpty()) {
        return ServerKind::Unknown;
    }
    return answered.DavTokens().contains("drovane") ? ServerKind::Service : ServerKind::Foreign;
}

}  // namespace

ServerCapabilities::ServerCapabilities(HttpConnection& connection) : _connection(connection) {}

ServerTraits& ServerCapabilities::Of(const QUrl& collection) {
    const QString server =
        collection.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
    const auto known = _traitsByServer.find(server);
    if (known != _traitsByServer.end()) {
        return known.value();
    }
    OptionsRequest request(collection);
    _connection.Perform(request);
    ServerTraits traits;
    traits.kind = KindOf(request);
    return _traitsByServer.insert(server, traits).value();
}

}  // namespace requests
}  // namespace ovsync
