#include "dvsync/XmlDocument.h"

#include <QXmlAttributes>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlParseException>
#include <QXmlSimpleReader>
#include <QXmlStreamReader>

namespace sync {
namespace dv {
namespace dvsync {

namespace {

const int MaximumDepth = 100;

// Qt 5.15 reads its documents with this parser and deprecates it all the same. Any other would stop at other mistakes
// than it, and so before or after what is to be found.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

class Guard : public QXmlDefaultHandler {
public:
    /// Whether nothing was found that must not be read. Mistakes are the document's affair.
    bool Accepts(const QByteArray& body) {
        QXmlInputSource source;
        source.setData(body);
        QXmlSimpleReader reader;
        reader.setContentHandler(this);
        reader.setDeclHandler(this);
        reader.setDTDHandler(this);
        reader.setErrorHandler(this);
        reader.parse(source);
        return _error.message.isEmpty();
    }

    const XmlError& Error() const { return _error; }

    bool startElement(const QString& /*namespaceUri*/, const QString& /*localName*/, const QString& /*name*/,
                      const QXmlAttributes& /*attributes*/) override {
        return ++_depth <= MaximumDepth || _Refuse("elements are nested too deeply");
    }
    bool endElement(const QString& /*namespaceUri*/, const QString& /*localName*/, const QString& /*name*/) override {
        --_depth;
        return true;
    }

    bool attributeDecl(const QString& /*element*/, const QString& /*attribute*/, const QString& /*type*/,
                       const QString& /*valueDefault*/, const QString& /*value*/) override {
        return _RefuseDeclaration();
    }
    bool internalEntityDecl(const QString& /*name*/, const QString& /*value*/) override { return _RefuseDeclaration(); }
    bool externalEntityDecl(const QString& /*name*/, const QString& /*publicId*/,
                            const QString& /*systemId*/) override {
        return _RefuseDeclaration();
    }
    bool notationDecl(const QString& /*name*/, const QString& /*publicId*/, const QString& /*systemId*/) override {
        return _RefuseDeclaration();
    }
    bool unparsedEntityDecl(const QString& /*name*/, const QString& /*publicId*/, const QString& /*systemId*/,
                            const QString& /*notation*/) override {
        return _RefuseDeclaration();
    }

    bool fatalError(const QXmlParseException& exception) override {
        _error.line = exception.lineNumber();
        _error.column = exception.columnNumber();
        return false;
    }

private:
    bool _Refuse(const char* message) {
        _error.message = QLatin1String(message);
        return false;
    }
    bool _RefuseDeclaration() { return _Refuse("declarations of a document type are not accepted"); }

    int _depth = 0;
    XmlError _error;
};

#pragma GCC diagnostic pop

}  // namespace

bool IsSafeForQuery(const QByteArray& body) {
    QXmlStreamReader reader(body);
    // Prefixes are the business of the query.
    reader.setNamespaceProcessing(false);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::DTD:
                return false;
            case QXmlStreamReader::StartElement:
                if (++depth > MaximumDepth) {
                    return false;
                }
                break;
            case QXmlStreamReader::EndElement:
                --depth;
                break;
            default:
                break;
        }
    }
    return !reader.hasError();
}

bool ReadXmlDocument(const QByteArray& body, QDomDocument& document, XmlError& error) {
    Guard guard;
    if (!guard.Accepts(body)) {
        error = guard.Error();
        return false;
    }
    return document.setContent(body, true, &error.message, &error.line, &error.column);
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
