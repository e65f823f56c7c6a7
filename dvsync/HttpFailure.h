#pragma once

#include <QUrl>
#include <memory>

#include "host/http/HttpException.h"

/// The statuses of the service, and how one that is a failure is thrown. Thread-safe.

namespace sync {
namespace dv {
namespace dvsync {

const int OkStatus = 200;
const int FoundStatus = 302;
const int NotModifiedStatus = 304;
const int BadRequestStatus = 400;
const int NotFoundStatus = 404;
const int ServiceUnavailableStatus = 503;

/// Whether a listing failed that was answered with `status`. Redirects that a login page sends are failures.
bool IsPropfindFailure(int status);

/// `text` with %0 for `url` and %1 for `status`. `exceptionUrl` is what the exception itself carries.
[[nodiscard]] http::HttpException Failure(const char* text, const QUrl& url, int status,
                                          const QUrl& exceptionUrl = QUrl());

/// An empty URL where there is none.
QUrl ValueOf(const std::shared_ptr<QUrl>& url);

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
