#include "client/requests/SharedListing.h"

#include <utility>

namespace ovsync {
namespace requests {

using sync::interf::IHttpRequest;

SharedListing::SharedListing(std::shared_ptr<IRequestSender> sender) : _sender(std::move(sender)) {}

void SharedListing::Execute(const QList<Request>& requests, const Completion& completed) {
    for (const Request& request : requests) {
        auto* const listing = dynamic_cast<PropfindRequest*>(request.get());
        const std::unique_ptr<PropfindRequest> answered = std::move(_answered);
        if (answered && listing != nullptr && listing->AsksTheSameAs(*answered)) {
            listing->TakeAnswerOf(*answered);
            Q_EMIT request->RequestCompleted(request, IHttpRequest::StateAnswered);
            completed(request, IHttpRequest::StateAnswered);
            continue;
        }
        _sender->Execute({request}, completed);
        if (listing != nullptr && listing->IsListing()) {
            _answered = listing->Copy();
        }
    }
}

}  // namespace requests
}  // namespace ovsync
