#pragma once

#include <QList>
#include <memory>

#include "client/requests/AccountConnection.h"
#include "host/interfaces/IRequestManager.h"

namespace ovsync {
namespace requests {

/// Executes the requests that a HttpFactory made. Not thread-safe.
class RequestManager : public sync::interf::IRequestManager {
public:
    explicit RequestManager(const std::shared_ptr<AccountConnection>& session);

    /// Throws what AccountConnection::Execute throws.
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override;

private:
    const std::shared_ptr<AccountConnection> _session;
};

}  // namespace requests
}  // namespace ovsync
