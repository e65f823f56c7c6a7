#pragma once

#include <QByteArray>
#include <QUrl>

#include "client/wire/HttpTransaction.h"
#include "host/interfaces/IHttpRequest.h"

namespace ovsync {
namespace requests {

/// A request without a body by which the client names itself to the service, and whose answer is kept whole: status,
/// headers and a body of at most BodyLimit. Of the statuses below 400 those that it was made with are answers; all from
/// 400 on are the library's to judge. Not thread-safe.
class WholeAnswerRequest : public sync::interf::IHttpRequest, public wire::HttpTransaction {
public:
    /// In bytes.
    static constexpr int BodyLimit = 1024 * 1024;

    /// `headers` are sent besides the one that names the client.
    WholeAnswerRequest(const QByteArray& method, const QUrl& url, const QList<int>& answers,
                       const Headers& headers = Headers());

    /// 207 is given as 424: the library takes every status below 400 for success, and a part that failed is none.
    int GetStatusCode() override;
    QUrl GetUrl() override;
    QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() override;
    QByteArray GetResponseBody() override;

    QByteArray Method() const override;
    QUrl Url() const override;
    Headers RequestHeaders() const override;
    bool TakeSlash() override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;

protected:
    void ReplaceAnswer(int status, const Headers& headers);
    void ReplaceBody(const QByteArray& body) { _body = body; }

private:
    const QByteArray _method;
    const QUrl _url;
    QUrl _sentUrl;
    const QList<int> _answers;
    const Headers _sentHeaders;
    int _status = 0;
    Headers _headers;
    QByteArray _body;
};

}  // namespace requests
}  // namespace ovsync
