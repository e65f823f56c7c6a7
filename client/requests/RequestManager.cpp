#include "client/requests/RequestManager.h"

#include <utility>

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;

RequestManager::RequestManager(std::shared_ptr<IRequestSender> sender) : _sender(std::move(sender)) {}

void RequestManager::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    _sender->Execute(requests, [](const std::shared_ptr<IHttpRequest>& /*request*/, IHttpRequest::RequestState) {});
}

}  // namespace requests
}  // namespace ovsync
