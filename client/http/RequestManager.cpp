#include "client/http/RequestManager.h"

#include <vector>

#include "client/http/Exchange.h"
#include "client/http/PropfindRequest.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace http {

using sync::interf::IHttpRequest;

RequestManager::RequestManager(
    const std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory>& authenticators, int serverId,
    const HttpSessionSettings& settings)
    : _session(settings, authenticators->CreateAuthenticator(serverId)) {}

void RequestManager::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    std::vector<Exchange*> exchanges;
    for (const std::shared_ptr<IHttpRequest>& request : requests) {
        auto* exchange = dynamic_cast<Exchange*>(request.get());
        if (exchange == nullptr) {
            throw sync::core::SyncException(
                QStringLiteral("Request %1 of %2 was not made by this client's HTTP factory and cannot be sent")
                    .arg(exchanges.size() + 1)
                    .arg(requests.size()));
        }
        exchanges.push_back(exchange);
    }
    for (int i = 0; i < requests.size(); ++i) {
        const std::shared_ptr<IHttpRequest>& request = requests[i];
        try {
            auto* const propfind = dynamic_cast<PropfindRequest*>(request.get());
            if (propfind != nullptr && propfind->IsListing()) {
                propfind->SetStandardPropertiesOnly(_capabilities.IsForeign(propfind->Url()));
            }
            _session.Perform(*exchanges[static_cast<size_t>(i)]);
        } catch (...) {
            Q_EMIT request->RequestCompleted(request, IHttpRequest::StateFailed);
            throw;
        }
        Q_EMIT request->RequestCompleted(request, IHttpRequest::StateAnswered);
    }
}

QString RequestManager::LastAnswer() const {
    return _session.LastAnswer().Text();
}

}  // namespace http
}  // namespace ovsync
