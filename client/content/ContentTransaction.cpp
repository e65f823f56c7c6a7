#include "client/content/ContentTransaction.h"

#include "client/wire/DateReader.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace content {

using wire::HttpTransaction;
using wire::ReadDate;

namespace {

QByteArray StrongEntityTag(const HttpTransaction::Headers& headers) {
    const QByteArray tag = HttpTransaction::ValueOf(headers, "etag");
    const bool isQuoted = tag.size() >= 2 && tag.startsWith('"') && tag.endsWith('"');
    return isQuoted && tag.count('"') == 2 ? tag : QByteArray();
}

std::optional<bool> ExecutableBit(const HttpTransaction::Headers& headers) {
    const QByteArray bit = HttpTransaction::ValueOf(headers, ExecutableHeader);
    return bit == "T" || bit == "F" ? std::make_optional(bit == "T") : std::nullopt;
}

qint64 AnnouncedSize(const HttpTransaction::Headers& headers) {
    // Several equal sizes come joined, and chunks go by no announced size.
    const QByteArray text = HttpTransaction::ValueOf(headers, "content-length").split(',').first().trimmed();
    bool isNumber = false;
    const qint64 size = text.toLongLong(&isNumber);
    const bool isKnown = isNumber && size >= 0 && HttpTransaction::ValueOf(headers, "transfer-encoding").isEmpty();
    return isKnown ? size : -1;
}

}  // namespace

ContentTransaction::ContentTransaction(const QByteArray& method, const QUrl& url) : _method(method), _url(url) {}

void ContentTransaction::RethrowFailure() const {
    if (_failure) {
        std::rethrow_exception(_failure);
    }
}

QByteArray ContentTransaction::Method() const {
    return _method;
}

QUrl ContentTransaction::Url() const {
    return _url;
}

bool ContentTransaction::MayComeCompressed() const {
    // The announced size would be that of something else than the content.
    return false;
}

void ContentTransaction::Forget() {
    _status = 0;
    _version = ContentVersion();
    _ignored = 0;
}

void ContentTransaction::OnHeaders(int status, const Headers& headers) {
    _status = status;
    const QByteArray modified = ValueOf(headers, "last-modified");
    _version.entityTag = StrongEntityTag(headers);
    const QByteArray tag = ValueOf(headers, "etag");
    _version.weakTag = tag.startsWith("W/\"") ? tag : QByteArray();
    _version.size = AnnouncedSize(headers);
    _version.lastModified = ReadDate(modified.constData(), static_cast<size_t>(modified.size()));
    _version.isExecutable = ExecutableBit(headers);
}

void ContentTransaction::OnBody(const char* /*bytes*/, size_t size) {
    _ignored += static_cast<qint64>(size);
    if (_ignored > IgnoredBodyLimit) {
        throw sync::core::SyncException(
            QStringLiteral("the body of the answer is above %1 bytes").arg(IgnoredBodyLimit));
    }
}

}  // namespace content
}  // namespace ovsync
