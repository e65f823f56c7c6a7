#pragma once

#include <QList>
#include <memory>

#include "client/requests/IRequestSender.h"
#include "host/interfaces/IRequestManager.h"

namespace ovsync {
namespace requests {

/// Executes the requests that a HttpFactory made. Not thread-safe.
class RequestManager : public sync::interf::IRequestManager {
public:
    explicit RequestManager(std::shared_ptr<IRequestSender> sender);

    /// Throws what the sender throws.
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override;

private:
    const std::shared_ptr<IRequestSender> _sender;
};

}  // namespace requests
}  // namespace ovsync
