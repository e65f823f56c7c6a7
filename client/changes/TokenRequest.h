#pragma once

#include <QByteArray>
#include <QUrl>

#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace changes {

/// Asks a collection whether it can report what changed in it, and for the token that stands for this moment. Takes
/// every answer. Not thread-safe.
class TokenRequest : public wire::HttpTransaction {
public:
    /// `collection` ends in '/'.
    explicit TokenRequest(const QUrl& collection) : _collection(collection) {}

    int Status() const { return _status; }
    /// Empty when it cannot report.
    QByteArray Token() const;

    QByteArray Method() const override { return "PROPFIND"; }
    QUrl Url() const override { return _collection; }
    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;

private:
    const QUrl _collection;
    int _status = 0;
    QByteArray _body;
};

}  // namespace changes
}  // namespace ovsync
