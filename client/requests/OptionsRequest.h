#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace requests {

/// Asks a server what it knows. Takes every answer, and nothing of its body. Not thread-safe.
class OptionsRequest : public wire::HttpTransaction {
public:
    explicit OptionsRequest(const QUrl& url);

    int StatusCode() const { return _status; }
    /// The tokens of the answer's DAV headers, in lower case; empty when there are none.
    const QList<QByteArray>& DavTokens() const { return _davTokens; }

    QByteArray Method() const override;
    QUrl Url() const override;
    bool IsHeadEnough() const override { return true; }
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;

private:
    const QUrl _url;
    int _status = 0;
    QList<QByteArray> _davTokens;
};

}  // namespace requests
}  // namespace ovsync
