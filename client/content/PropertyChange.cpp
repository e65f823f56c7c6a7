#include "client/content/PropertyChange.h"

#include <QXmlStreamReader>

#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace content {

using wire::HttpStatus;

PropertyChange::PropertyChange(const QUrl& url, const QByteArray& nameSpace, const QByteArray& name,
                               const QByteArray& value, const Headers& conditions)
    : ContentTransaction("PROPPATCH", url),
      _body("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:propertyupdate xmlns:D=\"DAV:\" xmlns:A=\"" + nameSpace +
            "\"><D:set><D:prop><A:" + name + ">" + value + "</A:" + name + "></D:prop></D:set></D:propertyupdate>\n"),
      _conditions(conditions) {}

int PropertyChange::Outcome() const {
    if (StatusCode() != HttpStatus::MultiStatus) {
        return StatusCode();
    }
    int outcome = 0;
    QXmlStreamReader reader(_answer);
    while (!reader.atEnd()) {
        const bool isStatus = reader.readNext() == QXmlStreamReader::StartElement &&
                              reader.name() == QLatin1String("status") &&
                              reader.namespaceUri() == QLatin1String("DAV:");
        if (isStatus) {
            outcome = qMax(outcome, reader.readElementText().section(QLatin1Char(' '), 1, 1).toInt());
        }
    }
    return reader.hasError() ? 0 : outcome;
}

wire::HttpTransaction::Headers PropertyChange::RequestHeaders() const {
    return Headers{{"Content-Type", "application/xml; charset=\"utf-8\""}} + _conditions;
}

void PropertyChange::Forget() {
    ContentTransaction::Forget();
    _answer.clear();
}

void PropertyChange::OnBody(const char* bytes, size_t size) {
    ContentTransaction::OnBody(bytes, size);
    _answer.append(bytes, static_cast<int>(size));
}

}  // namespace content
}  // namespace ovsync
