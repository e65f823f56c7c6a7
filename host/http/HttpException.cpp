#include "host/http/HttpException.h"

namespace sync {
namespace http {

HttpException::HttpException(const QString& message, int statusCode, const QUrl& url)
    : SyncException(message), _statusCode(statusCode), _url(url) {}

HttpException::HttpException(const HttpException& other) = default;
HttpException& HttpException::operator=(const HttpException& other) = default;
HttpException::~HttpException() noexcept = default;

}  // namespace http
}  // namespace sync
