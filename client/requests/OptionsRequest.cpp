#include "client/requests/OptionsRequest.h"

#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

OptionsRequest::OptionsRequest(const QUrl& url) : _url(url) {}

QByteArray OptionsRequest::Method() const {
    return "OPTIONS";
}

QUrl OptionsRequest::Url() const {
    return _url;
}

void OptionsRequest::Forget() {
    _status = 0;
    _davTokens.clear();
    _bodySize = 0;
}

void OptionsRequest::OnHeaders(int status, const Headers& headers) {
    _status = status;
    const QList<QByteArray> tokens = ValueOf(headers, "dav").toLower().split(',');
    for (const QByteArray& token : tokens) {
        if (!token.trimmed().isEmpty()) {
            _davTokens.append(token.trimmed());
        }
    }
}

void OptionsRequest::OnBody(const char* /*bytes*/, size_t size) {
    _bodySize += static_cast<qint64>(size);
    if (_bodySize > BodyLimit) {
        throw sync::core::SyncException(QStringLiteral("the body of the answer is above %1 bytes").arg(BodyLimit));
    }
}

}  // namespace requests
}  // namespace ovsync
