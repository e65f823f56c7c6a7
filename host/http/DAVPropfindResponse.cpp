#include "host/http/DAVPropfindResponse.h"

namespace sync {
namespace http {

DAVPropfindResponse::DAVPropfindResponse() = default;

DAVPropfindResponse::DAVPropfindResponse(const QString& href, const DAVPropfindProperties& properties)
    : DAVResponse(href), _properties(properties) {}

DAVPropfindResponse::DAVPropfindResponse(const DAVPropfindResponse& other) = default;
DAVPropfindResponse& DAVPropfindResponse::operator=(const DAVPropfindResponse& other) = default;
DAVPropfindResponse::~DAVPropfindResponse() = default;

}  // namespace http
}  // namespace sync
