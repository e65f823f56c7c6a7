#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QStringList>
#include <QUrl>
#include <memory>

#include "client/listing/MultistatusReader.h"
#include "client/requests/ServerCapabilities.h"
#include "client/wire/HttpTransaction.h"
#include "client/wire/ListingLimits.h"
#include "host/http/DAVPropfindRequest.h"

namespace ovsync {
namespace requests {

/// A PROPFIND that reads its answer while it arrives. Not thread-safe.
///
/// Refuses as an answer: a 207 whose content type is not XML or whose document is no listing (see MultistatusReader), a
/// 304 to an unconditional request, a 302 to Depth 0, every other status below 400, and a body above the limits. All
/// statuses from 400 and a 302 to a deeper request are the library's to judge, which throws on them or takes 404 for
/// what it says.
class PropfindRequest : public sync::http::DAVPropfindRequest, public wire::HttpTransaction {
public:
    /// `url` is sent as it is.
    PropfindRequest(const QUrl& url, Depth depth, listing::HrefScope scope = listing::HrefScope::OfUrl);
    ~PropfindRequest() override;

    /// Whether the request lists what lies in a collection.
    bool IsListing() const { return _depth != Resource; }
    bool IsTree() const { return _depth == Tree; }
    /// Which properties the server may know. Those of the service, unless set.
    void SetServerKind(ServerKind kind) { _serverKind = kind; }

    /// For what wire::AttributesToAskFor names, too. Whatever is not known to be the service is asked that anyhow.
    void AskForAttributes() { _asksForAttributes = true; }

    void SetLimits(const wire::ListingLimits& limits) { _limits = limits; }

    /// From now on asks, whatever its depth, for what lies right in the collection, and unconditionally: that a
    /// collection is unchanged says nothing of what lies below it.
    void AskForOneLevel();
    /// A request for what lies right in the folder `url` of this tree, in the words of this one. With `isPart` it puts
    /// that into the result of this one, which has to have one, and what it receives counts for the same limit.
    std::unique_ptr<PropfindRequest> ForFolder(const QUrl& url, bool isPart) const;

    /// Whether `other` would be sent with the same words to the same server.
    bool AsksTheSameAs(const PropfindRequest& other) const;
    /// A request of the same words with an answer of its own, equal to this one's.
    std::unique_ptr<PropfindRequest> Copy() const;
    /// As if this request had been sent and answered as `other` was.
    void TakeAnswerOf(PropfindRequest& other);
    /// As if this request had been sent and answered by that listing.
    void TakeListing(const std::shared_ptr<sync::http::DAVPropfindResult>& result);

    int GetStatusCode() override;
    QUrl GetUrl() override;
    QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() override;
    QByteArray GetResponseBody() override;

    void SetModifiedSinceTime(const QDateTime& time) override;
    /// Throws SyncException when a name is not of the form "{namespace}prefix:name"; the list is then unchanged.
    void SetProperties(const QStringList& names) override;
    /// Of a 304, a result that holds the service's time alone.
    std::shared_ptr<sync::http::DAVPropfindResult> GetResult() override;

    QByteArray Method() const override;
    QUrl Url() const override;
    Headers RequestHeaders() const override;
    QByteArray RequestBody() const override;
    bool TakeSlash() override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;
    void OnEnd() override;

private:
    const QUrl _url;
    QUrl _sentUrl;
    const Depth _depth;
    Depth _sentDepth;
    const listing::HrefScope _scope;
    QByteArray _modifiedSince;
    QStringList _names;
    ServerKind _serverKind = ServerKind::Service;
    bool _asksForAttributes = false;
    wire::ListingLimits _limits;

    int _status = 0;
    Headers _headers;
    qint64 _bodySize = 0;
    /// Of this one and its parts.
    std::shared_ptr<qint64> _wholeSize = std::make_shared<qint64>(0);
    /// What this one is a part of.
    std::shared_ptr<sync::http::DAVPropfindResult> _whole;
    QDateTime _serverTime;
    std::unique_ptr<listing::MultistatusReader> _reader;
    std::shared_ptr<sync::http::DAVPropfindResult> _result;
};

}  // namespace requests
}  // namespace ovsync
