#include "dvsync/XmlDocument.h"

#include <QXmlStreamReader>

namespace sync {
namespace dv {
namespace dvsync {

namespace {

const int MaximumDepth = 100;

}  // namespace

bool IsSafeXml(const QByteArray& body, XmlError& error) {
    QXmlStreamReader reader(body);
    // Prefixes are the business of the real parser.
    reader.setNamespaceProcessing(false);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::DTD:
                reader.raiseError(QLatin1String("a document type declaration is not accepted"));
                break;
            case QXmlStreamReader::StartElement:
                if (++depth > MaximumDepth) {
                    reader.raiseError(QLatin1String("elements are nested too deeply"));
                }
                break;
            case QXmlStreamReader::EndElement:
                --depth;
                break;
            default:
                break;
        }
    }
    if (!reader.hasError()) {
        return true;
    }
    error.message = reader.errorString();
    error.line = static_cast<int>(reader.lineNumber());
    error.column = static_cast<int>(reader.columnNumber());
    return false;
}

bool ReadXmlDocument(const QByteArray& body, QDomDocument& document, XmlError& error) {
    return IsSafeXml(body, error) && document.setContent(body, true, &error.message, &error.line, &error.column);
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
