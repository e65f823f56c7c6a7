#include "client/requests/HttpFactory.h"

#include <utility>

#include "client/listing/FolderProtocol.h"
#include "client/requests/AccountConnection.h"
#include "client/requests/FolderCreationRequest.h"
#include "client/requests/FolderQueryRequest.h"
#include "client/requests/PropfindRequest.h"
#include "client/requests/RequestExecutor.h"
#include "client/requests/WholeAnswerRequest.h"
#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using listing::HrefScope;
using listing::MadeUpIdPrefix;
using sync::core::SyncException;
using sync::http::DAVPropfindRequest;
using sync::interf::IHttpRequest;
using wire::HttpStatus;
using wire::HttpTransaction;

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

bool IsAskedById(const sync::config::FolderConfiguration& folder) {
    const QString& id = folder.getServerFolderId();
    return !id.isEmpty() && !id.startsWith(QLatin1String(MadeUpIdPrefix));
}

}  // namespace

HttpFactory::HttpFactory(const wire::ConnectionSettings& settings) : _settings(settings) {}

HttpFactory::HttpFactory(std::shared_ptr<IRequestSender> sender) : _sender(std::move(sender)) {}

std::shared_ptr<DAVPropfindRequest> HttpFactory::CreatePropfindRequest(std::shared_ptr<QUrl> url, int /*serverId*/,
                                                                       int depth) {
    const QUrl& asked = Checked(url, "PROPFIND");
    if (depth != DAVPropfindRequest::Resource && depth != DAVPropfindRequest::Children &&
        depth != DAVPropfindRequest::Tree) {
        throw SyncException(QStringLiteral("A PROPFIND has the depth 0, 1 or 2, not %1").arg(depth));
    }
    return std::make_shared<PropfindRequest>(
        depth == DAVPropfindRequest::Resource ? asked : HttpTransaction::AsCollection(asked),
        static_cast<DAVPropfindRequest::Depth>(depth));
}

std::shared_ptr<IHttpRequest> HttpFactory::CreateFolderRequest(int kind, std::shared_ptr<QUrl> url,
                                                               const sync::config::FolderConfiguration& folder) {
    const QUrl asked = HttpTransaction::AsCollection(Checked(url, "request for a folder"));
    switch (kind) {
        case FolderQuery:
            return std::make_shared<FolderQueryRequest>(asked, IsAskedById(folder) ? HrefScope::Any : HrefScope::OfUrl);
        case FolderCreation:
            return std::make_shared<FolderCreationRequest>(asked);
        case FolderDeletion:
            return std::make_shared<WholeAnswerRequest>(
                "DELETE", asked,
                QList<int>{HttpStatus::Ok, HttpStatus::Accepted, HttpStatus::NoContent, HttpStatus::MultiStatus});
        default:
            throw SyncException(QStringLiteral("A request for a folder is of the kind 2, 3 or 6, not %1").arg(kind));
    }
}

std::shared_ptr<IHttpRequest> HttpFactory::CreateFileRequest(std::shared_ptr<QUrl> url, int /*serverId*/,
                                                             int /*options*/) {
    return std::make_shared<WholeAnswerRequest>("HEAD", Checked(url, "request for a file"), QList<int>{HttpStatus::Ok});
}

std::shared_ptr<IHttpRequest> HttpFactory::CreateMoveRequest(std::shared_ptr<QUrl> source,
                                                             std::shared_ptr<QUrl> destination, int /*serverId*/) {
    const QUrl from = HttpTransaction::AsCollection(Checked(source, "move's source"));
    const QUrl to = HttpTransaction::AsCollection(Checked(destination, "move's destination"));
    return std::make_shared<WholeAnswerRequest>(
        "MOVE", from, QList<int>{HttpStatus::Ok, HttpStatus::Created, HttpStatus::NoContent, HttpStatus::MultiStatus},
        HttpTransaction::Headers{{"Destination", to.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment)},
                                 {"Overwrite", "F"}});
}

std::shared_ptr<sync::interf::IRequestExecutor> HttpFactory::CreateRequestExecutor(
    int serverId, std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory> authenticatorFactory) {
    if (_sender) {
        return std::make_shared<RequestExecutor>(_sender);
    }
    std::shared_ptr<IRequestSender>& sender = _senders[serverId];
    if (!sender) {
        sender = std::make_shared<AccountConnection>(_settings, authenticatorFactory->CreateAuthenticator(serverId));
    }
    return std::make_shared<RequestExecutor>(sender);
}

}  // namespace requests
}  // namespace ovsync
