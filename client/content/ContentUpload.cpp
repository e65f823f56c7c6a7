#include "client/content/ContentUpload.h"

#include <algorithm>

#include "client/wire/DateReader.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace content {

using sync::core::SyncException;
using wire::HttpTransaction;
using wire::IContentSource;

namespace {

const char* const DateHeader = "X-OC-Mtime";

}  // namespace

ContentUpload::ContentUpload(const QUrl& url, IContentSource& source, qint64 size, const Headers& conditions)
    : ContentTransaction("PUT", url), _source(source), _size(size), _conditions(conditions) {}

HttpTransaction::Headers ContentUpload::RequestHeaders() const {
    Headers headers = _conditions;
    headers.append(qMakePair(QByteArray("Content-Type"), QByteArray("application/octet-stream")));
    const QDateTime modified = _source.Modified();
    if (modified.isValid()) {
        headers.append(qMakePair(QByteArray(DateHeader), QByteArray::number(modified.toSecsSinceEpoch())));
    }
    if (const std::optional<bool> isExecutable = _source.IsExecutable()) {
        headers.append(qMakePair(QByteArray(ExecutableHeader), QByteArray(*isExecutable ? "T" : "F")));
    }
    return headers;
}

void ContentUpload::OnHeaders(int status, const Headers& headers) {
    ContentTransaction::OnHeaders(status, headers);
    _isDateTaken = ValueOf(headers, DateHeader) == "accepted";
    _isBitTaken = ValueOf(headers, ExecutableHeader) == "accepted";
    const QByteArray date = ValueOf(headers, "date");
    _answeredAt = wire::ReadDate(date.constData(), static_cast<size_t>(date.size()));
}

IContentSource* ContentUpload::StreamedBody() {
    return this;
}

qint64 ContentUpload::StreamedBodySize() const {
    return _size;
}

void ContentUpload::OnEnd() {
    if (StatusCode() < 300 && _sent != _size) {
        throw SyncException(QStringLiteral("the server took it for done after %1 of %2 bytes").arg(_sent).arg(_size));
    }
}

void ContentUpload::Restart() {
    _sent = 0;
    Guard([this] { _source.Restart(); });
    if (_size == 0) {
        _CheckThatSourceEnds();
    }
}

size_t ContentUpload::Read(char* bytes, size_t size) {
    const qint64 left = _size - _sent;
    const size_t count = _ReadSource(bytes, std::min(size, static_cast<size_t>(left)));
    if (count == 0 && left > 0) {
        throw SyncException(QStringLiteral("the content ends after %1 of %2 bytes").arg(_sent).arg(_size));
    }
    _sent += static_cast<qint64>(count);
    if (_sent == _size && left > 0) {
        _CheckThatSourceEnds();
    }
    return count;
}

size_t ContentUpload::_ReadSource(char* bytes, size_t size) {
    size_t count = 0;
    Guard([&] { count = _source.Read(bytes, size); });
    return count;
}

void ContentUpload::_CheckThatSourceEnds() {
    char more = 0;
    if (_ReadSource(&more, 1) > 0) {
        throw SyncException(QStringLiteral("the content is longer than the announced %1 bytes").arg(_size));
    }
}

}  // namespace content
}  // namespace ovsync
