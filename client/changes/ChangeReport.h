#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QUrl>
#include <memory>

#include "client/listing/ListingBuilder.h"
#include "client/listing/MultistatusReader.h"
#include "client/wire/HttpTransaction.h"
#include "client/wire/ListingLimits.h"

namespace ovsync {
namespace changes {

/// The REPORT by which a server tells what changed in a collection, at any depth, since it gave out a token (RFC 6578).
/// Takes every status; of a 207 it refuses what is no such answer. Not thread-safe.
class ChangeReport : public wire::HttpTransaction {
public:
    /// `collection` ends in '/'. With an empty `token` everything is asked for.
    ChangeReport(const QUrl& collection, const QByteArray& token, const wire::ListingLimits& limits);

    int Status() const { return _status; }
    /// Whether the server says that the token means nothing to it.
    bool IsTokenUnknown() const;

    /// The rest is there after a 207.
    const listing::ListingBuilder::Changes& Changes() const { return _changes; }
    /// What to ask with the next time.
    const QByteArray& Token() const { return _newToken; }
    /// Invalid when the server told none.
    const QDateTime& ServerTime() const { return _serverTime; }

    QByteArray Method() const override { return "REPORT"; }
    QUrl Url() const override { return _collection; }
    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;
    void OnEnd() override;

private:
    const QUrl _collection;
    const QByteArray _token;
    const wire::ListingLimits _limits;

    int _status = 0;
    qint64 _bodySize = 0;
    /// The first bytes of what is not a 207.
    QByteArray _error;
    QDateTime _serverTime;
    std::unique_ptr<listing::MultistatusReader> _reader;
    listing::ListingBuilder::Changes _changes;
    QByteArray _newToken;
};

}  // namespace changes
}  // namespace ovsync
