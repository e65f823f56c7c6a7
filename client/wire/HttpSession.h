#pragma once

#include <QAuthenticator>
#include <memory>

#include "client/wire/AnswerSummary.h"
#include "client/wire/Exchange.h"
#include "client/wire/HttpSessionSettings.h"

namespace ovsync {
namespace wire {

/// Sends requests over HTTP/1.1, one after the other, and keeps connections open in between. Not thread-safe, but for
/// Cancel.
///
/// Credentials are sent as Basic or Digest once a server asked for them, only to the host of the request, and over http
/// never as Basic to a host that took them as Digest. The certificate
/// and the name of a server are verified. Proxies are taken from the environment (http_proxy, https_proxy, all_proxy,
/// no_proxy). Redirects are not followed.
class HttpSession {
public:
    /// A null `credentials` stands for none.
    HttpSession(const HttpSessionSettings& settings, const QAuthenticator& credentials);
    ~HttpSession();
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    /// Returns when the answer came whole and `exchange` took it. Throws ExchangeError when no answer came, when it was
    /// cut off, when the server was silent or slow for too long, when `exchange` refused what came or broke its body
    /// off, and after Cancel.
    void Perform(Exchange& exchange);

    /// Ends the exchange under way, and each to come before anything is sent. May be called by any thread.
    void Cancel();

    /// Of the last exchange, whether it succeeded or not.
    const AnswerSummary& LastAnswer() const;

private:
    class Transfer;

    std::unique_ptr<Transfer> _transfer;
};

}  // namespace wire
}  // namespace ovsync
