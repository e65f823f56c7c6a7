#include "client/requests/ResourceQueryRequest.h"

#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace requests {

using wire::HttpStatus;

ResourceQueryRequest::ResourceQueryRequest(const QUrl& url) : PropfindRequest(url, Resource) {}

bool ResourceQueryRequest::HasFolder() {
    // A file that was asked for stands among the file-like entries, a collection does not.
    return _isRedirected || (GetResult() && GetResult()->fileResponses.isEmpty());
}

void ResourceQueryRequest::Forget() {
    PropfindRequest::Forget();
    _isRedirected = false;
}

void ResourceQueryRequest::OnHeaders(int status, const Headers& headers) {
    const bool isRedirect =
        status >= HttpStatus::MovedPermanently && status < HttpStatus::BadRequest && status != HttpStatus::NotModified;
    const QUrl target = Url().resolved(QUrl::fromEncoded(ValueOf(headers, "location")));
    _isRedirected = isRedirect && target.path(QUrl::FullyDecoded) == Url().path(QUrl::FullyDecoded) + QLatin1Char('/');
    if (!_isRedirected) {
        PropfindRequest::OnHeaders(status, headers);
    }
}

}  // namespace requests
}  // namespace ovsync
