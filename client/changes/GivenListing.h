#pragma once

#include <memory>

#include "client/requests/IRequestSender.h"
#include "host/http/DAVPropfindResult.h"

namespace ovsync {
namespace changes {

/// Answers a listing with what it was given, so that a library makes records of it. Sends nothing. Not thread-safe.
class GivenListing : public requests::IRequestSender {
public:
    explicit GivenListing(const std::shared_ptr<sync::http::DAVPropfindResult>& result) : _result(result) {}

    /// Throws SyncException for anything but a PROPFIND.
    void Execute(const QList<Request>& requests, const Completion& completed) override;

private:
    const std::shared_ptr<sync::http::DAVPropfindResult> _result;
};

}  // namespace changes
}  // namespace ovsync
