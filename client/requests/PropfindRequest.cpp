#include "client/requests/PropfindRequest.h"

#include <QMap>
#include <QRegularExpression>

#include "client/listing/CollectionTag.h"
#include "client/listing/MultistatusEntry.h"
#include "client/wire/AttributeNames.h"
#include "client/wire/DateReader.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using listing::HrefScope;
using listing::MultistatusEntry;
using listing::MultistatusReader;
using sync::core::SyncException;
using sync::http::DAVPropfindResult;
using wire::HttpDate;
using wire::HttpStatus;
using wire::HttpTransaction;
using wire::Printable;
using wire::ReadDate;

namespace {

QStringList DefaultProperties() {
    return {
        QStringLiteral("{DAV:}D:resourcetype"),      QStringLiteral("{DAV:}P:getcontentlength"),
        QStringLiteral("{DAV:}D:getlastmodified"),   QStringLiteral("{DAV:}D:creationdate"),
        QStringLiteral("{DAV:}P:resourceclasstype"), QStringLiteral("{DAV:}P:syncproperties"),
    };
}

/// The body of a PROPFIND that asks a server of that `kind` for `names`. Throws SyncException for a name that cannot be
/// read.
QByteArray PropfindBody(const QStringList& names, ServerKind kind, bool asksForAttributes, bool asksForTags) {
    // A namespace is a URI reference, and none of the characters left out here can stand in one.
    static const QRegularExpression nameForm(QStringLiteral(
        "\\A\\{([^\\x{00}-\\x{20}{}<>\"\\x{7f}]+)\\}([A-Za-z_][A-Za-z0-9._-]*):([A-Za-z_][A-Za-z0-9._-]*)\\z"));
    const QString davNamespace = QStringLiteral("DAV:");
    QMap<QString, QString> namespaces{{QStringLiteral("D"), davNamespace}};
    QString elements;
    bool isResourceTypeAsked = false;
    for (const QString& name : names) {
        const QRegularExpressionMatch match = nameForm.match(name);
        const QString prefix = match.captured(2);
        if (!match.hasMatch() || prefix.startsWith(QLatin1String("xml"), Qt::CaseInsensitive)) {
            throw SyncException(QStringLiteral("The property name \"%1\" is not of the form \"{namespace}prefix:name\"")
                                    .arg(Printable(name.toUtf8())));
        }
        const QString nameSpace = match.captured(1);
        const QString localName = match.captured(3);
        const QByteArray localBytes = localName.toLatin1();
        if (kind == ServerKind::Foreign && nameSpace == davNamespace &&
            MultistatusEntry::IsOfService({localBytes.constData(), static_cast<size_t>(localBytes.size())})) {
            continue;
        }
        QString declaration;
        if (!namespaces.contains(prefix)) {
            namespaces.insert(prefix, nameSpace);
        } else if (namespaces.value(prefix) != nameSpace) {
            declaration = QStringLiteral(" xmlns:%1=\"%2\"").arg(prefix, nameSpace.toHtmlEscaped());
        }
        elements += QStringLiteral("<%1:%2%3/>").arg(prefix, localName, declaration);
        isResourceTypeAsked =
            isResourceTypeAsked || (nameSpace == davNamespace && localName == QLatin1String("resourcetype"));
    }
    // What the service names versions by, others have only this for.
    const bool isDefault = names == DefaultProperties();
    if (isDefault && kind != ServerKind::Service) {
        elements += QLatin1String("<D:getetag/>");
    }
    // The service says it with the content.
    if (isDefault && (kind != ServerKind::Service || asksForAttributes)) {
        elements += QLatin1String(wire::AttributesToAskFor);
    }
    if (isDefault && asksForTags) {
        elements += QStringLiteral("<O:id xmlns:O=\"%1\"/><O:fileid xmlns:O=\"%1\"/>")
                        .arg(QLatin1String(listing::FileIdNamespace));
    }
    if (!isResourceTypeAsked) {
        elements.prepend(QLatin1String("<D:resourcetype/>"));
    }
    QString declarations;
    for (auto entry = namespaces.constBegin(); entry != namespaces.constEnd(); ++entry) {
        declarations += QStringLiteral(" xmlns:%1=\"%2\"").arg(entry.key(), entry.value().toHtmlEscaped());
    }
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
               "<D:propfind%1><D:prop>%2</D:prop></D:propfind>\n")
        .arg(declarations, elements)
        .toUtf8();
}

}  // namespace

PropfindRequest::PropfindRequest(const QUrl& url, Depth depth, HrefScope scope)
    : _url(url), _sentUrl(url), _depth(depth), _sentDepth(depth), _scope(scope), _names(DefaultProperties()) {}

PropfindRequest::~PropfindRequest() = default;

bool PropfindRequest::AsksTheSameAs(const PropfindRequest& other) const {
    return _url == other._url && _depth == other._depth && _modifiedSince == other._modifiedSince &&
           _names == other._names;
}

std::unique_ptr<PropfindRequest> PropfindRequest::Copy() const {
    auto copy = std::make_unique<PropfindRequest>(_url, _depth, _scope);
    copy->_modifiedSince = _modifiedSince;
    copy->_names = _names;
    copy->_serverKind = _serverKind;
    copy->_status = _status;
    copy->_headers = _headers;
    if (_result) {
        copy->_result = std::make_shared<DAVPropfindResult>(*_result);
    }
    return copy;
}

void PropfindRequest::TakeAnswerOf(PropfindRequest& other) {
    _status = other._status;
    _headers = other._headers;
    _result = std::move(other._result);
}

void PropfindRequest::AskForOneLevel() {
    _sentDepth = Children;
    _modifiedSince.clear();
}

std::unique_ptr<PropfindRequest> PropfindRequest::ForFolder(const QUrl& url, bool isPart) const {
    auto request = std::make_unique<PropfindRequest>(url, Children);
    request->_names = _names;
    request->_serverKind = _serverKind;
    request->_limits = _limits;
    if (isPart) {
        request->_whole = _result;
        request->_wholeSize = _wholeSize;
    }
    return request;
}

void PropfindRequest::TakeListing(const std::shared_ptr<DAVPropfindResult>& result) {
    _status = HttpStatus::MultiStatus;
    _result = result;
}

int PropfindRequest::GetStatusCode() {
    return _status;
}

QUrl PropfindRequest::GetUrl() {
    return _url;
}

QList<QPair<QByteArray, QByteArray>> PropfindRequest::GetResponseHeaders() {
    return _headers;
}

QByteArray PropfindRequest::GetResponseBody() {
    return QByteArray();
}

void PropfindRequest::SetModifiedSinceTime(const QDateTime& time) {
    _modifiedSince = HttpDate(time);
}

void PropfindRequest::SetProperties(const QStringList& names) {
    PropfindBody(names, ServerKind::Service, false, false);
    _names = names;
}

std::shared_ptr<DAVPropfindResult> PropfindRequest::GetResult() {
    return _result;
}

QByteArray PropfindRequest::Method() const {
    return "PROPFIND";
}

QUrl PropfindRequest::Url() const {
    return _sentUrl;
}

HttpTransaction::Headers PropfindRequest::RequestHeaders() const {
    Headers headers{
        {"Depth", _sentDepth == Tree ? QByteArray("infinity") : QByteArray::number(_sentDepth)},
        {"Content-Type", "application/xml; charset=\"utf-8\""},
        {"Prefer", "return=minimal"},
    };
    if (!_modifiedSince.isEmpty()) {
        headers.append({"If-Modified-Since", _modifiedSince});
    }
    return headers;
}

QByteArray PropfindRequest::RequestBody() const {
    return PropfindBody(_names, _serverKind, _asksForAttributes, IsListing() && _limits.supplement->KeepsTags());
}

bool PropfindRequest::TakeSlash() {
    _sentUrl = AsCollection(_url);
    return true;
}

void PropfindRequest::Forget() {
    _status = 0;
    _headers.clear();
    *_wholeSize -= _bodySize;
    _bodySize = 0;
    _serverTime = QDateTime();
    _reader.reset();
    _result.reset();
}

void PropfindRequest::OnHeaders(int status, const Headers& headers) {
    _status = status;
    _headers = headers;
    const QByteArray date = ValueOf(headers, "date");
    _serverTime = ReadDate(date.constData(), static_cast<size_t>(date.size()));
    if (status == HttpStatus::MultiStatus) {
        if (!HasXml(headers)) {
            throw SyncException(QStringLiteral("a listing is XML, but the content type is another"));
        }
        _reader = std::make_unique<MultistatusReader>(_sentUrl, _sentDepth, _scope, _limits, _whole);
        return;
    }
    const bool isMeaningful = status >= HttpStatus::BadRequest ||
                              (status == HttpStatus::NotModified && !_modifiedSince.isEmpty()) ||
                              (status == HttpStatus::Found && _depth != Resource);
    if (!isMeaningful) {
        throw SyncException(QStringLiteral("the status is unexpected for this request"));
    }
}

void PropfindRequest::OnBody(const char* bytes, size_t size) {
    _bodySize += static_cast<qint64>(size);
    *_wholeSize += static_cast<qint64>(size);
    if (*_wholeSize > _limits.bytes.value) {
        throw SyncException(QStringLiteral("the listing has more than %1 bytes, the limit set by %2")
                                .arg(QString::number(_limits.bytes.value), _limits.bytes.source));
    }
    if (_reader) {
        _reader->Feed(bytes, size);
    }
}

void PropfindRequest::OnEnd() {
    if (_reader) {
        _result = _reader->Finish();
        _reader.reset();
    } else if (_status == HttpStatus::NotModified) {
        _result = std::make_shared<DAVPropfindResult>();
    }
    // Of a whole the first answer's counts: what changes after it may be missing in what was listed by then.
    if (_result && !_whole) {
        _result->serverTime = _serverTime;
    }
}

}  // namespace requests
}  // namespace ovsync
