#include "client/content/ContentExchange.h"

#include "client/wire/DateReader.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace content {

using wire::Exchange;
using wire::ReadDate;

namespace {

QByteArray StrongEntityTag(const Exchange::Headers& headers) {
    const QByteArray tag = Exchange::ValueOf(headers, "etag");
    const bool isQuoted = tag.size() >= 2 && tag.startsWith('"') && tag.endsWith('"');
    return isQuoted && tag.count('"') == 2 ? tag : QByteArray();
}

qint64 AnnouncedSize(const Exchange::Headers& headers) {
    // Several equal sizes come joined, and chunks go by no announced size.
    const QByteArray text = Exchange::ValueOf(headers, "content-length").split(',').first().trimmed();
    bool isNumber = false;
    const qint64 size = text.toLongLong(&isNumber);
    const bool isKnown = isNumber && size >= 0 && Exchange::ValueOf(headers, "transfer-encoding").isEmpty();
    return isKnown ? size : -1;
}

}  // namespace

ContentExchange::ContentExchange(const QByteArray& method, const QUrl& url) : _method(method), _url(url) {}

void ContentExchange::RethrowFailure() const {
    if (_failure) {
        std::rethrow_exception(_failure);
    }
}

QByteArray ContentExchange::Method() const {
    return _method;
}

QUrl ContentExchange::Url() const {
    return _url;
}

Exchange::Headers ContentExchange::RequestHeaders() const {
    return {};
}

QByteArray ContentExchange::RequestBody() const {
    return QByteArray();
}

bool ContentExchange::MayComeCompressed() const {
    // The announced size would be that of something else than the content.
    return false;
}

void ContentExchange::Forget() {
    _status = 0;
    _version = ContentVersion();
    _ignored = 0;
}

void ContentExchange::OnHeaders(int status, const Headers& headers) {
    _status = status;
    const QByteArray modified = ValueOf(headers, "last-modified");
    _version.entityTag = StrongEntityTag(headers);
    _version.hasWeakTag = ValueOf(headers, "etag").startsWith("W/");
    _version.size = AnnouncedSize(headers);
    _version.lastModified = ReadDate(modified.constData(), static_cast<size_t>(modified.size()));
}

void ContentExchange::OnBody(const char* /*bytes*/, size_t size) {
    _ignored += static_cast<qint64>(size);
    if (_ignored > IgnoredBodyLimit) {
        throw sync::core::SyncException(
            QStringLiteral("the body of the answer is above %1 bytes").arg(IgnoredBodyLimit));
    }
}

void ContentExchange::OnEnd() {}

}  // namespace content
}  // namespace ovsync
