#pragma once

#include <QList>
#include <memory>

#include "client/requests/AccountSession.h"
#include "host/interfaces/IRequestManager.h"

namespace ovsync {
namespace requests {

/// Executes the requests that a HttpFactory made. Not thread-safe.
class RequestManager : public sync::interf::IRequestManager {
public:
    explicit RequestManager(const std::shared_ptr<AccountSession>& session);

    /// Throws what AccountSession::Execute throws.
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override;

private:
    const std::shared_ptr<AccountSession> _session;
};

}  // namespace requests
}  // namespace ovsync
