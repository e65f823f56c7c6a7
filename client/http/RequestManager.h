#pragma once

#include <QList>
#include <QString>
#include <memory>

#include "client/http/HttpSession.h"
#include "client/http/HttpSessionSettings.h"
#include "client/http/ServerCapabilities.h"
#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace http {

/// Executes the requests that a HttpFactory made, one after the other, over one HttpSession. Not thread-safe.
///
/// Before the first listing from a server it asks the server by OPTIONS what it knows; listings from a server that is
/// not the service leave out the properties that only the service knows.
///
/// How an answer is never taken for less than it is: the library that asks looks at the status and at the result of a
/// request, and takes a request without a result for an empty listing. So nothing reaches it that is neither a failure
/// by its status nor a whole listing. What came instead (no answer, a connection that broke, silence, a body shorter
/// than announced, a status without a meaning, a 207 that PropfindRequest refuses) is thrown out of Execute as an
/// ExchangeError and passes through the library, which catches nothing. A result is attached to a request only after
/// the last byte of its answer was received and read.
class RequestManager : public sync::interf::IRequestManager {
public:
    /// Asks `authenticators` once, here, for the credentials of the account `serverId`.
    RequestManager(const std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory>& authenticators,
                   int serverId, const HttpSessionSettings& settings = HttpSessionSettings());

    /// Throws ExchangeError for the first request whose answer is none; those after it are not sent. Throws
    /// SyncException, before anything is sent, when a request was not made by a HttpFactory.
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override;

    /// One line on the status, the content type and the first bytes of the answer to the last request that was sent, to
    /// go with an error of the library, which knows the status only.
    QString LastAnswer() const;

private:
    HttpSession _session;
    ServerCapabilities _capabilities{_session};
};

}  // namespace http
}  // namespace ovsync
