#include "client/requests/RequestExecutor.h"

#include <utility>

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;

RequestExecutor::RequestExecutor(std::shared_ptr<IRequestSender> sender) : _sender(std::move(sender)) {}

void RequestExecutor::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    _sender->Execute(requests, [this](const std::shared_ptr<IHttpRequest>& request, IHttpRequest::RequestState state) {
        Q_EMIT RequestCompleted(request, state);
    });
}

}  // namespace requests
}  // namespace ovsync
