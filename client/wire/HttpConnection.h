#pragma once

#include <QAuthenticator>
#include <memory>

#include "client/wire/AnswerSummary.h"
#include "client/wire/ConnectionSettings.h"
#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace wire {

/// Sends requests over HTTP/1.1, one after the other, and keeps connections open in between. Not thread-safe, but for
/// Cancel.
///
/// Credentials are sent as Basic or Digest once a server asked for them, only to the host of the request, and over http
/// never as Basic to a host that took them as Digest. The certificate
/// and the name of a server are verified. Proxies are taken from the environment (http_proxy, https_proxy, all_proxy,
/// no_proxy). Redirects are not followed.
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

    /// Ends the transaction under way, and each to come before anything is sent. May be called by any thread.
    void Cancel();

    /// Of the last transaction, whether it succeeded or not.
    const AnswerSummary& LastAnswer() const;

private:
    class Transfer;

    std::unique_ptr<Transfer> _transfer;
};

}  // namespace wire
}  // namespace ovsync
