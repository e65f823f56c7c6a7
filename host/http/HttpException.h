#pragma once

#include <QUrl>

#include "host/core/OvSyncExport.h"
#include "host/core/SyncException.h"

namespace sync {
namespace http {

/// An exchange that the service did not answer as the operation needs. A value: copies are independent.
class OVSYNC_HTTP_EXPORT HttpException : public core::SyncException {
public:
    HttpException(const QString& message, int statusCode, const QUrl& url);
    HttpException(const HttpException& other);
    HttpException& operator=(const HttpException& other);
    ~HttpException() noexcept override;

    int StatusCode() const { return _statusCode; }
    /// Empty where the thrower names the URL in the message only.
    const QUrl& Url() const { return _url; }

private:
    int _statusCode;
    QUrl _url;
};

}  // namespace http
}  // namespace sync
