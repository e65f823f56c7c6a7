#include "client/requests/RequestManager.h"

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;

RequestManager::RequestManager(const std::shared_ptr<AccountConnection>& session) : _session(session) {}

void RequestManager::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    _session->Execute(requests, [](const std::shared_ptr<IHttpRequest>& /*request*/, IHttpRequest::RequestState) {});
}

}  // namespace requests
}  // namespace ovsync
