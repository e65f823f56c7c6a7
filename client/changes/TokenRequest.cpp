#include "client/changes/TokenRequest.h"

#include <QXmlStreamReader>

#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace changes {

namespace {

const int BodyLimit = 64 * 1024;

}  // namespace

QByteArray TokenRequest::Token() const {
    if (_status != wire::HttpStatus::MultiStatus || _body.size() >= BodyLimit) {
        return QByteArray();
    }
    QXmlStreamReader reader(_body);
    bool canReport = false;
    QString token;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement || reader.namespaceUri() != QLatin1String("DAV:")) {
            continue;
        }
        if (reader.name() == QLatin1String("sync-collection")) {
            canReport = true;
        } else if (reader.name() == QLatin1String("sync-token")) {
            token = reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
        }
    }
    return canReport && !reader.hasError() ? token.toUtf8() : QByteArray();
}

wire::HttpTransaction::Headers TokenRequest::RequestHeaders() const {
    return {{"Depth", "0"}, {"Content-Type", "application/xml; charset=\"utf-8\""}, {"Prefer", "return=minimal"}};
}

QByteArray TokenRequest::RequestBody() const {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<D:propfind xmlns:D=\"DAV:\"><D:prop><D:supported-report-set/><D:sync-token/></D:prop></D:propfind>\n";
}

void TokenRequest::Forget() {
    _status = 0;
    _body.clear();
}

void TokenRequest::OnHeaders(int status, const Headers& /*headers*/) {
    _status = status;
}

void TokenRequest::OnBody(const char* bytes, size_t size) {
    _body.append(bytes, static_cast<int>(qMin(size, static_cast<size_t>(BodyLimit - _body.size()))));
}

}  // namespace changes
}  // namespace ovsync
