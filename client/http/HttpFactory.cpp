#include "client/http/HttpFactory.h"

#include "client/http/PropfindRequest.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace http {

using sync::core::SyncException;
using sync::http::DAVPropfindRequest;

std::shared_ptr<DAVPropfindRequest> HttpFactory::CreatePropfindRequest(std::shared_ptr<QUrl> url, int /*serverId*/,
                                                                       int depth) {
    if (!url) {
        throw SyncException(QStringLiteral("A PROPFIND needs a URL, and there is none for this path"));
    }
    const bool isHttp = url->scheme() == QLatin1String("http") || url->scheme() == QLatin1String("https");
    if (!url->isValid() || !isHttp || url->host().isEmpty()) {
        throw SyncException(QStringLiteral("A PROPFIND needs an http or https URL, not \"%1\"")
                                .arg(url->toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo)));
    }
    if (depth != DAVPropfindRequest::Resource && depth != DAVPropfindRequest::Children &&
        depth != DAVPropfindRequest::Tree) {
        throw SyncException(QStringLiteral("A PROPFIND has the depth 0, 1 or 2, not %1").arg(depth));
    }
    QUrl asked = *url;
    if (depth != DAVPropfindRequest::Resource && !asked.path(QUrl::FullyEncoded).endsWith(QLatin1Char('/'))) {
        // As an encoded path, because a decoded one would lose the escapes of '/' and '%'.
        asked.setPath(asked.path(QUrl::FullyEncoded) + QLatin1Char('/'), QUrl::TolerantMode);
    }
    return std::make_shared<PropfindRequest>(asked, static_cast<DAVPropfindRequest::Depth>(depth));
}

}  // namespace http
}  // namespace ovsync
