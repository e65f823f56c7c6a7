#include "client/requests/AccountConnection.h"

#include <vector>

#include "client/requests/FolderCreationRequest.h"
#include "client/requests/FolderQueryRequest.h"
#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;
using wire::ConnectionSettings;
using wire::HttpStatus;
using wire::HttpTransaction;

AccountConnection::AccountConnection(const ConnectionSettings& settings, const QAuthenticator& credentials)
    : _limits(settings.listing), _connection(settings, credentials) {}

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

const wire::AnswerSummary& AccountConnection::LastAnswer() const {
    return _connection.LastAnswer();
}

void AccountConnection::ListByLevels(PropfindRequest& tree, const TreeListing::Choice& enters) {
    ServerTraits server;
    server.kind = ServerKind::Foreign;
    server.isRefusingTrees = true;
    tree.SetLimits(_limits);
    tree.SetServerKind(server.kind);
    TreeListing(_connection, server, enters).Perform(tree);
}

void AccountConnection::_Perform(IHttpRequest& request, HttpTransaction& transaction) {
    if (auto* const propfind = dynamic_cast<PropfindRequest*>(&request)) {
        if (propfind->IsTree() && _limits.supplement->KeepsTags()) {
            ListByLevels(*propfind);
            return;
        }
        propfind->SetLimits(_limits);
        if (propfind->IsListing()) {
            ServerTraits& server = _capabilities.Of(propfind->Url());
            propfind->SetServerKind(server.kind);
            if (propfind->IsTree()) {
                TreeListing(_connection, server).Perform(*propfind);
                return;
            }
        }
    }
    _connection.Perform(transaction);
    auto* const creation = dynamic_cast<FolderCreationRequest*>(&request);
    if (creation != nullptr && creation->GetStatusCode() == HttpStatus::MethodNotAllowed) {
        FolderQueryRequest query(creation->Url(), listing::HrefScope::OfUrl);
        _connection.Perform(query);
        if (query.GetStatusCode() == HttpStatus::MultiStatus) {
            creation->TakeAsThere();
        }
    }
}

}  // namespace requests
}  // namespace ovsync
