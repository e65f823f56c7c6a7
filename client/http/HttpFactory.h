#pragma once

#include <QUrl>
#include <memory>

#include "host/interfaces/factory/IHttpFactory.h"

namespace ovsync {
namespace http {

/// Makes the requests that a RequestManager executes. Thread-safe.
class HttpFactory : public sync::interf::factory::IHttpFactory {
public:
    /// A `depth` of Children or Tree adds the '/' that the URL of a collection ends in. Throws SyncException when `url`
    /// is empty or no http or https URL, or `depth` is not a DAVPropfindRequest::Depth.
    std::shared_ptr<sync::http::DAVPropfindRequest> CreatePropfindRequest(std::shared_ptr<QUrl> url, int serverId,
                                                                          int depth) override;
};

}  // namespace http
}  // namespace ovsync
