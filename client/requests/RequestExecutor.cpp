#include "client/requests/RequestExecutor.h"

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;

RequestExecutor::RequestExecutor(const std::shared_ptr<AccountConnection>& session) : _session(session) {}

void RequestExecutor::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    _session->Execute(requests, [this](const std::shared_ptr<IHttpRequest>& request, IHttpRequest::RequestState state) {
        Q_EMIT RequestCompleted(request, state);
    });
}

}  // namespace requests
}  // namespace ovsync
