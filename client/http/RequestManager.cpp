#include "client/http/RequestManager.h"

namespace ovsync {
namespace http {

using sync::interf::IHttpRequest;

RequestManager::RequestManager(const std::shared_ptr<AccountSession>& session) : _session(session) {}

void RequestManager::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    _session->Execute(requests, [](const std::shared_ptr<IHttpRequest>& /*request*/, IHttpRequest::RequestState) {});
}

}  // namespace http
}  // namespace ovsync
