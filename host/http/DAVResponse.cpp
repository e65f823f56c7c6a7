#include "host/http/DAVResponse.h"

namespace sync {
namespace http {

DAVResponse::DAVResponse() = default;
DAVResponse::DAVResponse(const QString& href) : _href(href) {}
DAVResponse::DAVResponse(const DAVResponse& other) : QObject(), _href(other._href) {}

DAVResponse& DAVResponse::operator=(const DAVResponse& other) {
    _href = other._href;
    return *this;
}

DAVResponse::~DAVResponse() = default;

}  // namespace http
}  // namespace sync
