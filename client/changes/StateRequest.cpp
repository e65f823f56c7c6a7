#include "client/changes/StateRequest.h"

#include <QHash>
#include <QXmlStreamReader>

#include "client/listing/CollectionTag.h"
#include "client/wire/DateReader.h"
#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace changes {

namespace {

const int BodyLimit = 64 * 1024;

}  // namespace

wire::HttpTransaction::Headers StateRequest::RequestHeaders() const {
    return {{"Depth", "0"}, {"Content-Type", "application/xml; charset=\"utf-8\""}, {"Prefer", "return=minimal"}};
}

QByteArray StateRequest::RequestBody() const {
    return QByteArray(
               "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
               "<D:propfind xmlns:D=\"DAV:\" xmlns:O=\"") +
           listing::FileIdNamespace +
           "\"><D:prop><D:supported-report-set/><D:sync-token/><D:getetag/><O:id/><O:fileid/></D:prop></D:propfind>\n";
}

void StateRequest::Forget() {
    _status = 0;
    _serverTime = QDateTime();
    _body.clear();
    _token.clear();
    _tag.clear();
}

void StateRequest::OnHeaders(int status, const Headers& headers) {
    _status = status;
    const QByteArray date = ValueOf(headers, "date");
    _serverTime = wire::ReadDate(date.constData(), static_cast<size_t>(date.size()));
}

void StateRequest::OnBody(const char* bytes, size_t size) {
    _body.append(bytes, static_cast<int>(qMin(size, static_cast<size_t>(BodyLimit - _body.size()))));
}

void StateRequest::OnEnd() {
    if (_status != wire::HttpStatus::MultiStatus || _body.size() >= BodyLimit) {
        return;
    }
    QXmlStreamReader reader(_body);
    bool canReport = false;
    QHash<QString, QString> texts;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QString name = reader.name().toString();
        if (reader.namespaceUri() == QLatin1String("DAV:")) {
            canReport = canReport || name == QLatin1String("sync-collection");
            if (name != QLatin1String("sync-token") && name != QLatin1String("getetag")) {
                continue;
            }
        } else if (reader.namespaceUri() != QLatin1String(listing::FileIdNamespace)) {
            continue;
        }
        texts.insert(name, reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed());
    }
    if (reader.hasError()) {
        return;
    }
    _token = canReport ? texts.value(QStringLiteral("sync-token")).toUtf8() : QByteArray();
    _tag = listing::CollectionTag(texts.value(QStringLiteral("id")), texts.value(QStringLiteral("fileid")),
                                  texts.value(QStringLiteral("getetag")));
}

}  // namespace changes
}  // namespace ovsync
