#include "client/requests/WholeAnswerRequest.h"

#include "client/listing/FolderProtocol.h"
#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using listing::ProtocolVersion;
using listing::VersionHeader;
using sync::core::SyncException;
using wire::HttpStatus;
using wire::HttpTransaction;

WholeAnswerRequest::WholeAnswerRequest(const QByteArray& method, const QUrl& url, const QList<int>& answers,
                                       const Headers& headers)
    : _method(method), _url(url), _sentUrl(url), _answers(answers), _sentHeaders(headers) {}

int WholeAnswerRequest::GetStatusCode() {
    return _status == HttpStatus::MultiStatus ? HttpStatus::FailedDependency : _status;
}

QUrl WholeAnswerRequest::GetUrl() {
    return _url;
}

QList<QPair<QByteArray, QByteArray>> WholeAnswerRequest::GetResponseHeaders() {
    return _headers;
}

QByteArray WholeAnswerRequest::GetResponseBody() {
    return _body;
}

QByteArray WholeAnswerRequest::Method() const {
    return _method;
}

QUrl WholeAnswerRequest::Url() const {
    return _sentUrl;
}

HttpTransaction::Headers WholeAnswerRequest::RequestHeaders() const {
    return Headers{{VersionHeader, ProtocolVersion}} + _sentHeaders;
}

bool WholeAnswerRequest::TakeSlash() {
    _sentUrl = AsCollection(_url);
    return true;
}

void WholeAnswerRequest::Forget() {
    _status = 0;
    _headers.clear();
    _body.clear();
}

void WholeAnswerRequest::OnHeaders(int status, const Headers& headers) {
    if (status < HttpStatus::BadRequest && !_answers.contains(status)) {
        throw SyncException(QStringLiteral("the status is unexpected for this request"));
    }
    _status = status;
    _headers = headers;
}

void WholeAnswerRequest::OnBody(const char* bytes, size_t size) {
    if (size > static_cast<size_t>(BodyLimit - _body.size())) {
        throw SyncException(QStringLiteral("the body of the answer is above %1 bytes").arg(BodyLimit));
    }
    _body.append(bytes, static_cast<int>(size));
}

void WholeAnswerRequest::ReplaceAnswer(int status, const Headers& headers) {
    _status = status;
    _headers = headers;
}

}  // namespace requests
}  // namespace ovsync
