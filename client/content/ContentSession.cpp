#include "client/content/ContentSession.h"

#include "client/content/ContentDownload.h"
#include "client/content/ContentUpload.h"
#include "client/wire/DateReader.h"
#include "client/wire/ExchangeError.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace content {

using wire::ContentSource;
using wire::ExchangeError;
using wire::HttpDate;
using wire::HttpSessionSettings;
using wire::HttpStatus;

ContentSession::ContentSession(const HttpSessionSettings& settings, const QAuthenticator& credentials)
    : _session(settings, credentials) {}

std::optional<ContentVersion> ContentSession::Look(const QUrl& url) {
    ContentExchange query("HEAD", url);
    _Perform(query);
    switch (query.StatusCode()) {
        case HttpStatus::Ok:
            return query.Version();
        case HttpStatus::NotFound:
        case HttpStatus::Gone:
            return std::nullopt;
        default:
            _ThrowRefusal(query);
    }
}

ContentVersion ContentSession::Download(const QUrl& url, ContentSink& sink) {
    ContentDownload download(url, sink);
    _Perform(download);
    if (download.StatusCode() != HttpStatus::Ok) {
        _ThrowRefusal(download);
    }
    return download.Version();
}

UploadOutcome ContentSession::Upload(const QUrl& url, ContentSource& source, qint64 size, UploadCondition condition,
                                     const ContentVersion& known) {
    QPair<QByteArray, QByteArray> header("If-None-Match", "*");
    if (condition == UploadCondition::Unchanged) {
        header = known.entityTag.isEmpty() ? qMakePair(QByteArray("If-Unmodified-Since"), HttpDate(known.lastModified))
                                           : qMakePair(QByteArray("If-Match"), known.entityTag);
    }
    if (header.second.isEmpty()) {
        throw sync::core::SyncException(
            QStringLiteral("%1 cannot be replaced only if it is unchanged: the server gave neither an entity tag nor a "
                           "date for it")
                .arg(url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo)));
    }
    ContentUpload upload(url, source, size, header);
    _Perform(upload);
    switch (upload.StatusCode()) {
        case HttpStatus::Ok:
        case HttpStatus::Created:
        case HttpStatus::NoContent:
            return UploadOutcome::Stored;
        case HttpStatus::PreconditionFailed:
            return UploadOutcome::Refused;
        default:
            _ThrowRefusal(upload);
    }
}

void ContentSession::Cancel() {
    _session.Cancel();
}

void ContentSession::_Perform(ContentExchange& exchange) {
    try {
        _session.Perform(exchange);
    } catch (const ExchangeError&) {
        exchange.RethrowFailure();
        throw;
    }
}

void ContentSession::_ThrowRefusal(const ContentExchange& exchange) const {
    const int status = exchange.StatusCode();
    const ExchangeError error(exchange.Method(), exchange.Url(),
                              QStringLiteral("the service answered with %1").arg(status), _session.LastAnswer());
    throw sync::http::HttpException(error.Message(), status, exchange.Url());
}

}  // namespace content
}  // namespace ovsync
