#include "client/requests/FolderQueryRequest.h"

#include "client/listing/FolderProtocol.h"
#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace requests {

using listing::HrefScope;
using listing::IdHeader;
using listing::OwnerIdHeader;
using listing::ProtocolVersion;
using listing::VersionHeader;
using wire::HttpStatus;
using wire::HttpTransaction;

FolderQueryRequest::FolderQueryRequest(const QUrl& url, HrefScope scope) : PropfindRequest(url, Resource, scope) {}

int FolderQueryRequest::GetStatusCode() {
    const int status = PropfindRequest::GetStatusCode();
    return status == HttpStatus::MultiStatus && !_HasFolder() ? HttpStatus::NotFound : status;
}

QList<QPair<QByteArray, QByteArray>> FolderQueryRequest::GetResponseHeaders() {
    Headers headers = PropfindRequest::GetResponseHeaders();
    if (!_HasFolder()) {
        return headers;
    }
    const sync::http::DAVPropfindResponse folder = GetResult()->singleResponse;
    const auto addMissing = [&headers](const char* name, const QString& value) {
        if (!value.isEmpty() && ValueOf(headers, name).isEmpty()) {
            headers.append(qMakePair(QByteArray(name), value.toUtf8()));
        }
    };
    addMissing(IdHeader, folder.getItemId());
    addMissing(OwnerIdHeader, folder.getOwnerId());
    return headers;
}

HttpTransaction::Headers FolderQueryRequest::RequestHeaders() const {
    Headers headers = PropfindRequest::RequestHeaders();
    headers.append(qMakePair(QByteArray(VersionHeader), QByteArray(ProtocolVersion)));
    return headers;
}

bool FolderQueryRequest::_HasFolder() {
    // A file that was asked for stands among the file-like entries, a collection does not.
    return GetResult() && GetResult()->fileResponses.isEmpty();
}

}  // namespace requests
}  // namespace ovsync
