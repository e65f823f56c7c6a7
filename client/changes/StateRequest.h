#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace changes {

/// Asks a collection for what can stand for its state at this moment: whether it can report what changed in it, with
/// the token to ask with, and the entity tag and the id that some servers give it. Takes every answer. Not thread-safe.
class StateRequest : public wire::HttpTransaction {
public:
    /// `collection` ends in '/'.
    explicit StateRequest(const QUrl& collection) : _collection(collection) {}

    int Status() const { return _status; }
    /// Empty when it cannot report.
    const QByteArray& Token() const { return _token; }
    /// A listing::CollectionTag; empty when it has none.
    const QString& Tag() const { return _tag; }
    /// Invalid when the server told none.
    const QDateTime& ServerTime() const { return _serverTime; }

    QByteArray Method() const override { return "PROPFIND"; }
    QUrl Url() const override { return _collection; }
    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;
    void OnEnd() override;

private:
    const QUrl _collection;
    int _status = 0;
    QDateTime _serverTime;
    QByteArray _body;
    QByteArray _token;
    QString _tag;
};

}  // namespace changes
}  // namespace ovsync
