#include "client/changes/ChangeReport.h"

#include <QXmlStreamReader>

#include "client/wire/AttributeNames.h"
#include "client/wire/DateReader.h"
#include "client/wire/HttpStatus.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace changes {

using listing::MultistatusReader;
using sync::core::SyncException;
using sync::http::DAVPropfindResult;
using wire::HttpStatus;

namespace {

const int ErrorLimit = 4096;

/// What listings ask the service and other servers for.
const char WantedProperties[] =
    "<D:resourcetype/><D:getcontentlength/><D:getlastmodified/><D:creationdate/><D:resourceclasstype/>"
    "<D:syncproperties/><D:getetag/>";

}  // namespace

ChangeReport::ChangeReport(const QUrl& collection, const QByteArray& token, const wire::ListingLimits& limits)
    : _collection(collection), _token(token), _limits(limits) {}

bool ChangeReport::IsTokenUnknown() const {
    if (_status != HttpStatus::Forbidden && _status != HttpStatus::Conflict) {
        return false;
    }
    QXmlStreamReader reader(_error);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == QLatin1String("valid-sync-token") &&
            reader.namespaceUri() == QLatin1String("DAV:")) {
            return true;
        }
    }
    return false;
}

wire::HttpTransaction::Headers ChangeReport::RequestHeaders() const {
    return {{"Depth", "0"}, {"Content-Type", "application/xml; charset=\"utf-8\""}, {"Prefer", "return=minimal"}};
}

QByteArray ChangeReport::RequestBody() const {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<D:sync-collection xmlns:D=\"DAV:\"><D:sync-token>" +
           QString::fromUtf8(_token).toHtmlEscaped().toUtf8() +
           "</D:sync-token><D:sync-level>infinite</D:sync-level><D:prop>" + WantedProperties +
           wire::AttributesToAskFor + "</D:prop></D:sync-collection>\n";
}

void ChangeReport::Forget() {
    _status = 0;
    _bodySize = 0;
    _error.clear();
    _serverTime = QDateTime();
    _reader.reset();
    _changes = {};
    _newToken.clear();
}

void ChangeReport::OnHeaders(int status, const Headers& headers) {
    _status = status;
    const QByteArray date = ValueOf(headers, "date");
    _serverTime = wire::ReadDate(date.constData(), static_cast<size_t>(date.size()));
    if (status != HttpStatus::MultiStatus) {
        return;
    }
    if (!HasXml(headers)) {
        throw SyncException(QStringLiteral("a report is XML, but the content type is another"));
    }
    _changes = {std::make_shared<DAVPropfindResult>(), std::make_shared<DAVPropfindResult>()};
    _reader = std::make_unique<MultistatusReader>(_collection, _limits, _changes);
}

void ChangeReport::OnBody(const char* bytes, size_t size) {
    if (!_reader) {
        _error.append(bytes, static_cast<int>(qMin(size, static_cast<size_t>(ErrorLimit - _error.size()))));
        return;
    }
    _bodySize += static_cast<qint64>(size);
    if (_bodySize > _limits.bytes.value) {
        throw SyncException(QStringLiteral("the report has more than %1 bytes, the limit set by %2")
                                .arg(QString::number(_limits.bytes.value), _limits.bytes.source));
    }
    _reader->Feed(bytes, size);
}

void ChangeReport::OnEnd() {
    if (!_reader) {
        return;
    }
    _reader->Finish();
    _newToken = _reader->SyncToken();
    _reader.reset();
    if (_newToken.isEmpty()) {
        throw SyncException(QStringLiteral("the report does not say which state it tells of"));
    }
}

}  // namespace changes
}  // namespace ovsync
