#include "client/content/ContentDownload.h"

#include <optional>

#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace content {

using sync::core::SyncException;
using wire::HttpStatus;
using wire::HttpTransaction;

namespace {

/// Where the part ends, by the header Content-Range, if it begins at `begin` and is the whole rest.
std::optional<qint64> EndOfRest(const QByteArray& range, qint64 begin) {
    const QByteArray expected = "bytes " + QByteArray::number(begin) + '-';
    const int slash = range.indexOf('/');
    if (!range.toLower().startsWith(expected) || slash < 0) {
        return std::nullopt;
    }
    bool isNumber = false;
    const qint64 last = range.mid(expected.size(), slash - expected.size()).toLongLong(&isNumber);
    const bool isRest = isNumber && last >= begin && range.mid(slash + 1).trimmed() == QByteArray::number(last + 1);
    return isRest ? std::make_optional(last + 1) : std::nullopt;
}

}  // namespace

ContentDownload::ContentDownload(const QUrl& url, ContentSink& sink, const ContentPart& part)
    : ContentTransaction("GET", url), _sink(sink), _part(part) {}

ContentVersion ContentDownload::Whole() const {
    ContentVersion version = Version();
    if (_end >= 0) {
        version.size = _end;
    }
    return version;
}

HttpTransaction::Headers ContentDownload::RequestHeaders() const {
    if (_part.size == 0) {
        return {};
    }
    return {{"Range", "bytes=" + QByteArray::number(_part.size) + '-'}, {"If-Range", _part.entityTag}};
}

void ContentDownload::Forget() {
    ContentTransaction::Forget();
    _end = -1;
    _received = 0;
}

void ContentDownload::OnHeaders(int status, const Headers& headers) {
    ContentTransaction::OnHeaders(status, headers);
    if (status == HttpStatus::Ok) {
        Guard([this] {
            _sink.TakeVersion(Version());
            _sink.Restart(Version().size);
        });
    } else if (_part.size > 0 && status == HttpStatus::PartialContent) {
        _TakeRest(headers);
    } else if (_part.size > 0 && status == HttpStatus::RangeNotSatisfiable) {
        _isWrongPart = true;
    }
}

void ContentDownload::OnBody(const char* bytes, size_t size) {
    if (StatusCode() != HttpStatus::Ok && _end < 0) {
        ContentTransaction::OnBody(bytes, size);
        return;
    }
    _received += static_cast<qint64>(size);
    if (_end >= 0 && _part.size + _received > _end) {
        throw SyncException(QStringLiteral("more came than the part that was announced"));
    }
    Guard([&] { _sink.Write(bytes, size); });
}

void ContentDownload::OnEnd() {
    if (_end >= 0 && _part.size + _received != _end) {
        throw SyncException(QStringLiteral("less came than the part that was announced"));
    }
}

void ContentDownload::_TakeRest(const Headers& headers) {
    const std::optional<qint64> end = EndOfRest(ValueOf(headers, "content-range"), _part.size);
    _isWrongPart = !end || Version().entityTag != _part.entityTag;
    if (_isWrongPart) {
        throw SyncException(QStringLiteral("the answer is not the part of the content that was asked for"));
    }
    _end = *end;
    Guard([this] {
        _sink.TakeVersion(Whole());
        _sink.GoOn();
    });
}

}  // namespace content
}  // namespace ovsync
