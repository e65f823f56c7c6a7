#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include "client/http/Exchange.h"

namespace ovsync {
namespace http {

/// Asks a server what it knows. Takes every answer. Not thread-safe.
class OptionsRequest : public Exchange {
public:
    explicit OptionsRequest(const QUrl& url);

    int StatusCode() const { return _status; }
    /// The tokens of the answer's DAV headers, in lower case; empty when there are none.
    const QList<QByteArray>& DavTokens() const { return _davTokens; }

    QByteArray Method() const override;
    QUrl Url() const override;
    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;
    void OnEnd() override;

private:
    const QUrl _url;
    int _status = 0;
    QList<QByteArray> _davTokens;
};

}  // namespace http
}  // namespace ovsync
