#pragma once

#include <QString>

#include "client/requests/IRequestSender.h"
#include "client/requests/PropfindRequest.h"
#include "client/requests/ServerCapabilities.h"
#include "client/requests/TreeListing.h"
#include "client/wire/HttpConnection.h"

namespace ovsync {
namespace requests {

/// Executes the requests that a HttpFactory made for one account, one after the other, over one HttpConnection. Not
/// thread-safe.
///
/// Before the first listing from a server it asks the server by OPTIONS what it knows; listings from a server that is
/// not the service leave out the properties that only the service knows. A whole tree that a server does not list at
/// once is listed folder by folder (see TreeListing).
///
/// How an answer is never taken for less than it is: the library that asks looks at the status and at the result of a
/// request, and takes a request without a result for an empty listing. So nothing reaches it that is neither a failure
/// by its status nor a whole answer. What came instead (no answer, a connection that broke, silence, a body shorter
/// than announced, a status without a meaning, a body that the request refuses) is thrown out of Execute as an
/// TransactionError and passes through the library, which catches nothing. A result is attached to a request only after
/// the last byte of its answer was received and read.
class AccountConnection : public IRequestSender {
public:
    /// A null `credentials` stands for none.
    AccountConnection(const wire::ConnectionSettings& settings, const QAuthenticator& credentials);

    /// Throws TransactionError for the first request that gets no valid answer; those after it are not sent. Throws
    /// SyncException, before anything is sent, when a request was not made by a HttpFactory.
    void Execute(const QList<Request>& requests, const Completion& completed) override;

    /// Sends what the library does not know of. Throws TransactionError.
    void Perform(wire::HttpTransaction& transaction) { _connection.Perform(transaction); }
    /// Lists a tree of a server that is not the service folder by folder, also where that would list it at once. Throws
    /// as TreeListing does.
    void ListByLevels(PropfindRequest& tree, const TreeListing::Choice& enters = nullptr);
    /// Of the server of a collection; asks it, unless that is known. Throws TransactionError.
    ServerKind KindOf(const QUrl& collection) { return _capabilities.Of(collection).kind; }
    const wire::ListingLimits& Limits() const { return _limits; }

    /// Ends the request under way, and each to come, with a TransactionError.
    void Cancel() { _connection.Cancel(); }

    /// The answer to the last request that was sent, to go with an error of the library, which knows the status only.
    const wire::AnswerSummary& LastAnswer() const;

private:
    void _Perform(sync::interf::IHttpRequest& request, wire::HttpTransaction& transaction);

    const wire::ListingLimits _limits;
    wire::HttpConnection _connection;
    ServerCapabilities _capabilities{_connection};
};

}  // namespace requests
}  // namespace ovsync
