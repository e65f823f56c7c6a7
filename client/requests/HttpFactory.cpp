#include "client/requests/HttpFactory.h"

#include "client/listing/FolderProtocol.h"
#include "client/requests/FileQueryRequest.h"
#include "client/requests/FolderCreationRequest.h"
#include "client/requests/FolderDeletionRequest.h"
#include "client/requests/FolderQueryRequest.h"
#include "client/requests/MoveRequest.h"
#include "client/requests/PropfindRequest.h"
#include "client/requests/RequestExecutor.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using listing::HrefScope;
using listing::MadeUpIdPrefix;
using sync::core::SyncException;
using sync::http::DAVPropfindRequest;
using sync::interf::IHttpRequest;

namespace {

/// `what` names the request.
const QUrl& Checked(const std::shared_ptr<QUrl>& url, const char* what) {
    if (!url) {
        throw SyncException(
            QStringLiteral("A %1 needs a URL, and there is none for this path").arg(QLatin1String(what)));
    }
    const bool isHttp = url->scheme() == QLatin1String("http") || url->scheme() == QLatin1String("https");
    if (!url->isValid() || !isHttp || url->host().isEmpty()) {
        throw SyncException(QStringLiteral("A %1 needs an http or https URL, not \"%2\"")
                                .arg(QLatin1String(what), url->toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo)));
    }
    return *url;
}

QUrl AsCollection(const QUrl& url) {
    QUrl collection = url;
    if (!url.path(QUrl::FullyEncoded).endsWith(QLatin1Char('/'))) {
        // As an encoded path, because a decoded one would lose the escapes of '/' and '%'.
        collection.setPath(url.path(QUrl::FullyEncoded) + QLatin1Char('/'), QUrl::TolerantMode);
    }
    return collection;
}

bool IsAskedById(const sync::config::FolderConfiguration& folder) {
    const QString& id = folder.getServerFolderId();
    return !id.isEmpty() && !id.startsWith(QLatin1String(MadeUpIdPrefix));
}

}  // namespace

HttpFactory::HttpFactory(const std::shared_ptr<AccountConnections>& sessions) : _sessions(sessions) {}

std::shared_ptr<DAVPropfindRequest> HttpFactory::CreatePropfindRequest(std::shared_ptr<QUrl> url, int /*serverId*/,
                                                                       int depth) {
    const QUrl& asked = Checked(url, "PROPFIND");
    if (depth != DAVPropfindRequest::Resource && depth != DAVPropfindRequest::Children &&
        depth != DAVPropfindRequest::Tree) {
        throw SyncException(QStringLiteral("A PROPFIND has the depth 0, 1 or 2, not %1").arg(depth));
    }
    return std::make_shared<PropfindRequest>(depth == DAVPropfindRequest::Resource ? asked : AsCollection(asked),
                                             static_cast<DAVPropfindRequest::Depth>(depth));
}

std::shared_ptr<IHttpRequest> HttpFactory::CreateFolderRequest(int kind, std::shared_ptr<QUrl> url,
                                                               const sync::config::FolderConfiguration& folder) {
    const QUrl asked = AsCollection(Checked(url, "request for a folder"));
    switch (kind) {
        case FolderQuery:
            return std::make_shared<FolderQueryRequest>(asked, IsAskedById(folder) ? HrefScope::Any : HrefScope::OfUrl);
        case FolderCreation:
            return std::make_shared<FolderCreationRequest>(asked);
        case FolderDeletion:
            return std::make_shared<FolderDeletionRequest>(asked);
        default:
            throw SyncException(QStringLiteral("A request for a folder is of the kind 2, 3 or 6, not %1").arg(kind));
    }
}

std::shared_ptr<IHttpRequest> HttpFactory::CreateFileRequest(std::shared_ptr<QUrl> url, int /*serverId*/,
                                                             int /*options*/) {
    return std::make_shared<FileQueryRequest>(Checked(url, "request for a file"));
}

std::shared_ptr<IHttpRequest> HttpFactory::CreateMoveRequest(std::shared_ptr<QUrl> source,
                                                             std::shared_ptr<QUrl> destination, int /*serverId*/) {
    return std::make_shared<MoveRequest>(AsCollection(Checked(source, "move's source")),
                                         AsCollection(Checked(destination, "move's destination")));
}

std::shared_ptr<sync::interf::IRequestExecutor> HttpFactory::CreateRequestExecutor(
    int serverId, std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory) {
    return std::make_shared<RequestExecutor>(_sessions->Of(serverId, *authenticatorFactory));
}

}  // namespace requests
}  // namespace ovsync
