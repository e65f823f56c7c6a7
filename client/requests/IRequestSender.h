#pragma once

#include <QList>
#include <functional>
#include <memory>

#include "host/interfaces/IHttpRequest.h"

namespace ovsync {
namespace requests {

/// Where a RequestManager and a RequestExecutor hand on what they are to execute.
class IRequestSender {
public:
    using Request = std::shared_ptr<sync::interf::IHttpRequest>;
    using Completion = std::function<void(const Request&, sync::interf::IHttpRequest::RequestState)>;

    virtual ~IRequestSender() = default;

    /// One after the other. Emits the signal of each request and calls `completed` right after. Throws what an
    /// AccountConnection throws.
    virtual void Execute(const QList<Request>& requests, const Completion& completed) = 0;
};

}  // namespace requests
}  // namespace ovsync
