#include "client/requests/ServerCapabilities.h"

#include "client/requests/OptionsRequest.h"

namespace ovsync {
namespace requests {

using wire::HttpConnection;

ServerCapabilities::ServerCapabilities(HttpConnection& connection) : _connection(connection) {}

bool ServerCapabilities::IsForeign(const QUrl& collection) {
    const QString server =
        collection.toString(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
    const auto known = _foreignByServer.constFind(server);
    if (known != _foreignByServer.constEnd()) {
        return known.value();
    }
    OptionsRequest request(collection);
    _connection.Perform(request);
    const bool isSuccess = request.StatusCode() >= 200 && request.StatusCode() < 300;
    const bool isForeign = isSuccess && !request.DavTokens().isEmpty() && !request.DavTokens().contains("drovane");
    _foreignByServer.insert(server, isForeign);
    return isForeign;
}

}  // namespace requests
}  // namespace ovsync
