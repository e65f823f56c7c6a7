#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace requests {

/// Asks a server what it knows. Takes every answer whose body, which tells nothing, has at most BodyLimit. Not
/// thread-safe.
class OptionsRequest : public wire::HttpTransaction {
public:
    /// In bytes.
    static constexpr qint64 BodyLimit = qint64(1024) * 1024;

    explicit OptionsRequest(const QUrl& url);

    int StatusCode() const { return _status; }
    /// The tokens of the answer's DAV headers, in lower case; empty when there are none.
    const QList<QByteArray>& DavTokens() const { return _davTokens; }

    QByteArray Method() const override;
    QUrl Url() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;

private:
    const QUrl _url;
    int _status = 0;
    QList<QByteArray> _davTokens;
    qint64 _bodySize = 0;
};

}  // namespace requests
}  // namespace ovsync
