#pragma once

#include <QNetworkAccessManager>
#include <memory>

#include "client/wire/HttpTransaction.h"
#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"

/// Sends the requests that this host's HTTP factory made, by Qt in place of the client's own connections, and writes a
/// line about each to standard error. An answer is held in memory until it is complete. Needs a QCoreApplication, whose
/// event loop it runs. Not thread-safe.
class QtTransport : public sync::interf::IRequestManager {
public:
    explicit QtTransport(sync::interf::factory::INetworkAccessManagerFactory& managers);

    /// Throws TransactionError when no answer came or a request refuses what came. Requests after it are not sent.
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override;

private:
    void _Send(ovsync::wire::HttpTransaction& transaction);

    const std::shared_ptr<QNetworkAccessManager> _manager;
};
