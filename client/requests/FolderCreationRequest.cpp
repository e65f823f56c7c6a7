#include "client/requests/FolderCreationRequest.h"

#include <QXmlStreamReader>

#include "client/listing/FolderProtocol.h"
#include "client/listing/Href.h"
#include "client/wire/HttpStatus.h"
#include "client/wire/Printable.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace requests {

using listing::Href;
using listing::IdHeader;
using listing::MadeUpIdPrefix;
using sync::core::SyncException;
using wire::HttpStatus;
using wire::Printable;

namespace {

/// The id in Response/Folders/Folder/id; empty when there is none. Throws SyncException when the document is not
/// complete.
QString IdIn(const QByteArray& body) {
    const QStringList idPath{QStringLiteral("Response"), QStringLiteral("Folders"), QStringLiteral("Folder"),
                             QStringLiteral("id")};
    QXmlStreamReader reader(body);
    QStringList path;
    QString id;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::StartElement:
                path.append(reader.name().toString());
                break;
            case QXmlStreamReader::EndElement:
                path.removeLast();
                break;
            case QXmlStreamReader::Characters:
                if (path == idPath) {
                    id += reader.text();
                }
                break;
            default:
                break;
        }
    }
    if (reader.hasError()) {
        throw SyncException(QStringLiteral("the XML that describes the new folder is broken at line %1, column %2: %3")
                                .arg(reader.lineNumber())
                                .arg(reader.columnNumber())
                                .arg(Printable(reader.errorString().toUtf8())));
    }
    return id;
}

QByteArray MadeUpBody(const QUrl& url) {
    Href href(url);
    const QByteArray path = url.path(QUrl::FullyEncoded).toUtf8();
    href.Read(path.constData(), static_cast<size_t>(path.size()));
    const QString id = QString::fromStdString(MadeUpIdPrefix + href.Key());
    return QByteArrayLiteral(
               "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
               "<Response><Folders><Folder><id>") +
           id.toHtmlEscaped().toUtf8() + QByteArrayLiteral("</id></Folder></Folders></Response>");
}

}  // namespace

FolderCreationRequest::FolderCreationRequest(const QUrl& url)
    : WholeAnswerRequest("MKCOL", url, {HttpStatus::Created, HttpStatus::MultiStatus}) {}

void FolderCreationRequest::TakeAsThere() {
    ReplaceAnswer(HttpStatus::BadRequest, {{"x-ovs-reason-phrase", "existing file already exists"}});
}

void FolderCreationRequest::OnEnd() {
    if (GetStatusCode() != HttpStatus::Created) {
        return;
    }
    if (ValueOf(GetResponseHeaders(), IdHeader).isEmpty()) {
        ReplaceBody(MadeUpBody(GetUrl()));
    } else if (IdIn(GetResponseBody()).isEmpty()) {
        throw SyncException(QStringLiteral("the body does not say which id the new folder has"));
    }
}

}  // namespace requests
}  // namespace ovsync
