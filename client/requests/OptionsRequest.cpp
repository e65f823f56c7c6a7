#include "client/requests/OptionsRequest.h"

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

}  // namespace requests
}  // namespace ovsync
