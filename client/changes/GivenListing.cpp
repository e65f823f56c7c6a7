#include "client/changes/GivenListing.h"

#include "client/requests/PropfindRequest.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace changes {

using sync::interf::IHttpRequest;

void GivenListing::Execute(const QList<Request>& requests, const Completion& completed) {
    for (const Request& request : requests) {
        auto* const listing = dynamic_cast<requests::PropfindRequest*>(request.get());
        if (listing == nullptr) {
            throw sync::core::SyncException(QStringLiteral("There is an answer to a listing alone."));
        }
        listing->TakeListing(_result);
        Q_EMIT request->RequestCompleted(request, IHttpRequest::StateAnswered);
        completed(request, IHttpRequest::StateAnswered);
    }
}

}  // namespace changes
}  // namespace ovsync
