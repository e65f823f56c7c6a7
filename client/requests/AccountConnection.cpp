#include "client/requests/AccountConnection.h"

#include <utility>
#include <vector>

#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;
using wire::ConnectionSettings;
using wire::HttpTransaction;

AccountConnection::AccountConnection(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _limits(settings.listing), _session(settings, credentials) {}

void AccountConnection::Execute(const QList<Request>& requests, const Completion& completed) {
    std::vector<HttpTransaction*> transactions;
    for (const Request& request : requests) {
        auto* transaction = dynamic_cast<HttpTransaction*>(request.get());
        if (transaction == nullptr) {
            throw sync::core::SyncException(
                QStringLiteral("Request %1 of %2 was not made by this client's HTTP factory and cannot be sent")
                    .arg(transactions.size() + 1)
                    .arg(requests.size()));
        }
        transactions.push_back(transaction);
    }
    for (int i = 0; i < requests.size(); ++i) {
        const Request& request = requests[i];
        try {
            _Perform(*request, *transactions[static_cast<size_t>(i)]);
        } catch (...) {
            Q_EMIT request->RequestCompleted(request, IHttpRequest::StateFailed);
            completed(request, IHttpRequest::StateFailed);
            throw;
        }
        Q_EMIT request->RequestCompleted(request, IHttpRequest::StateAnswered);
        completed(request, IHttpRequest::StateAnswered);
    }
}

void AccountConnection::ShareNextListing() {
    _sharesNextListing = true;
    _shared.reset();
}

QString AccountConnection::LastAnswer() const {
    return _session.LastAnswer().Text();
}

void AccountConnection::_Perform(IHttpRequest& request, HttpTransaction& transaction) {
    auto* const propfind = dynamic_cast<PropfindRequest*>(&request);
    if (propfind != nullptr) {
        propfind->SetLimits(_limits);
    }
    if (propfind != nullptr && propfind->IsListing()) {
        _List(*propfind);
    } else {
        _shared.reset();
        _session.Perform(transaction);
    }
}

void AccountConnection::_List(PropfindRequest& listing) {
    const std::unique_ptr<PropfindRequest> shared = std::move(_shared);
    const bool sharesThis = std::exchange(_sharesNextListing, false);
    listing.SetStandardPropertiesOnly(_capabilities.IsForeign(listing.Url()));
    if (shared && shared->AsksTheSameAs(listing)) {
        listing.TakeAnswerOf(*shared);
        return;
    }
    _session.Perform(listing);
    if (sharesThis) {
        _shared = listing.Copy();
    }
}

}  // namespace requests
}  // namespace ovsync
