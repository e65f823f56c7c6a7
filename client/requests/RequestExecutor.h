#pragma once

#include <QList>
#include <memory>

#include "client/requests/IRequestSender.h"
#include "host/interfaces/IRequestExecutor.h"

namespace ovsync {
namespace requests {

/// Executes one list of requests that a HttpFactory made, and tells of each how it ended: answered, or failed when
/// there was no answer. Not thread-safe.
class RequestExecutor : public sync::interf::IRequestExecutor {
public:
    explicit RequestExecutor(std::shared_ptr<IRequestSender> sender);

    /// Throws what the sender throws, after it told that the request failed.
    void Execute(const QList<std::shared_ptr<sync::interf::IHttpRequest>>& requests) override;

private:
    const std::shared_ptr<IRequestSender> _sender;
};

}  // namespace requests
}  // namespace ovsync
