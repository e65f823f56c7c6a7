#include "dvsync/HttpFailure.h"

#include "dvsync/Filled.h"

namespace sync {
namespace dv {
namespace dvsync {

bool IsPropfindFailure(int status) {
    return status >= BadRequestStatus || status == FoundStatus;
}

http::HttpException Failure(const char* text, const QUrl& url, int status, const QUrl& exceptionUrl) {
    return http::HttpException(Filled(text, url.toString(), QString::number(status)), status, exceptionUrl);
}

QUrl ValueOf(const std::shared_ptr<QUrl>& url) {
    return url ? *url : QUrl();
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
