#include "host/http/DAVPropfindResponse.h"

#include <utility>

namespace sync {
namespace http {

DAVPropfindResponse::DAVPropfindResponse() = default;

DAVPropfindResponse::DAVPropfindResponse(const QString& href, const DAVPropfindProperties& properties)
    : DAVResponse(href), _properties(properties) {}

void DAVPropfindResponse::Describe(const QString& href, DAVPropfindProperties properties) {
    _SetHref(href);
    _properties = std::move(properties);
}

DAVPropfindResponse::DAVPropfindResponse(const DAVPropfindResponse& other) = default;
DAVPropfindResponse& DAVPropfindResponse::operator=(const DAVPropfindResponse& other) = default;
DAVPropfindResponse::~DAVPropfindResponse() = default;

}  // namespace http
}  // namespace sync
