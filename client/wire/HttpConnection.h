#pragma once

#include <QAuthenticator>
#include <memory>

#include "client/wire/AnswerSummary.h"
#include "client/wire/ConnectionSettings.h"
#include "client/wire/HttpTransaction.h"
#include "client/wire/ITransactionQueue.h"

namespace ovsync {
namespace wire {

/// Sends requests over HTTP/1.1 and keeps connections open in between. Not thread-safe, but for Cancel.
///
/// Credentials are sent as Basic or Digest once a server asked for them, only to the host of the request, and over http
/// never as Basic to a host that took them as Digest. The certificate
/// and the name of a server are verified. Proxies are taken from the environment (http_proxy, https_proxy, all_proxy,
/// no_proxy). Redirects are not followed; but a server that only wants a '/' at the end of the path is asked again with
/// it, where the transaction allows that.
class HttpConnection {
public:
    /// A null `credentials` stands for none.
    HttpConnection(const ConnectionSettings& settings, const QAuthenticator& credentials);
    ~HttpConnection();
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;

    /// Returns when the answer came completely and `transaction` took it. Throws TransactionError when no answer came,
    /// when it was cut off, when the server was silent or slow for too long, when `transaction` refused what came or
    /// broke its body off, and after Cancel.
    void Perform(HttpTransaction& transaction);

    /// Performs what `queue` gives, up to `most` at the same time, each over a connection of its own and all on the
    /// caller's thread, until it gives no more. Throws for the first that fails, as Perform does, and breaks the others
    /// off. The limit on silence is each one's, that on slowness counts for all together.
    void PerformAll(ITransactionQueue& queue, int most);

    /// Ends the transactions under way, and each to come before anything is sent. May be called by any thread.
    void Cancel();

    /// Of the last transaction that ended, whether it succeeded or not.
    const AnswerSummary& LastAnswer() const;

private:
    class Transfers;

    std::unique_ptr<Transfers> _transfers;
};

}  // namespace wire
}  // namespace ovsync
