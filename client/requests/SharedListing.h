#pragma once

#include "client/requests/IRequestSender.h"
#include "client/requests/PropfindRequest.h"

namespace ovsync {
namespace requests {

/// Sends a listing, keeps its answer and gives that to the next listing that asks the same, which is not sent: the
/// library lists a folder's files and its sub-folders by two equal requests. Everything else is handed on. For one such
/// question; what is asked later is to be asked anew. Not thread-safe.
class SharedListing : public IRequestSender {
public:
    explicit SharedListing(std::shared_ptr<IRequestSender> sender);

    void Execute(const QList<Request>& requests, const Completion& completed) override;

private:
    const std::shared_ptr<IRequestSender> _sender;
    std::unique_ptr<PropfindRequest> _answered;
};

}  // namespace requests
}  // namespace ovsync
