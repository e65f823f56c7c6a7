#include "client/library/SyncConfigWatch.h"
#include "client/wire/HttpStatus.h"

#include <QNetworkReply>
#include <QXmlStreamReader>

#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace library {

using wire::AnswerSummary;
using wire::HttpStatus;
using wire::TransactionError;

namespace {

const int DeepestElement = 100;

/// `isTrusted`: the server's certificate.
TransactionError::Cause CauseOf(QNetworkReply::NetworkError error, bool isTrusted) {
    using Cause = TransactionError::Cause;
    switch (error) {
        case QNetworkReply::NoError:
            return Cause::WrongAnswer;
        case QNetworkReply::HostNotFoundError:
            return Cause::UnknownHost;
        case QNetworkReply::ProxyNotFoundError:
            return Cause::UnknownProxy;
        case QNetworkReply::ConnectionRefusedError:
        case QNetworkReply::UnknownNetworkError:
            return Cause::NoConnection;
        case QNetworkReply::OperationCanceledError:
            return Cause::Silence;
        case QNetworkReply::SslHandshakeFailedError:
            return isTrusted ? Cause::WrongProtocol : Cause::NotTrusted;
        case QNetworkReply::RemoteHostClosedError:
            return Cause::CutOff;
        default:
            return Cause::Other;
    }
}

bool IsRoot(const QXmlStreamReader& reader) {
    return reader.name() == QLatin1String("SyncConfig") && reader.namespaceUri().isEmpty();
}

/// Why the body is no sync-configuration document; empty when it is one.
QString ProblemOf(const QByteArray& body) {
    // The library reads Latin-1 too, whatever the document declares, and does not mind what stands before it.
    static const QByteArray byteOrderMark("\xEF\xBB\xBF");
    const QByteArray document = body.mid(body.startsWith(byteOrderMark) ? byteOrderMark.size() : 0).trimmed();
    if (document.isEmpty()) {
        return QStringLiteral("the document is empty");
    }
    QXmlStreamReader reader(QString::fromLatin1(document));
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::DTD:
                return QStringLiteral("the document declares a document type, which no sync configuration does");
            case QXmlStreamReader::StartElement:
                if (depth == 0 && !IsRoot(reader)) {
                    return QStringLiteral(
                               "the document is no sync configuration, its root is <%1> in the namespace "
                               "\"%2\"")
                        .arg(reader.name().toString().left(AnswerSummary::FirstBytesLimit),
                             reader.namespaceUri().toString().left(AnswerSummary::FirstBytesLimit));
                }
                if (++depth > DeepestElement) {
                    return QStringLiteral("the document nests elements deeper than %1").arg(DeepestElement);
                }
                break;
            case QXmlStreamReader::EndElement:
                --depth;
                break;
            default:
                break;
        }
    }
    if (reader.hasError()) {
        return QStringLiteral("the document is not well-formed, line %1, column %2: %3")
            .arg(QString::number(reader.lineNumber()), QString::number(reader.columnNumber()), reader.errorString());
    }
    return QString();
}

}  // namespace

SyncConfigWatch::SyncConfigWatch(const std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory>& managers)
    : _managers(managers) {}

std::shared_ptr<QNetworkAccessManager> SyncConfigWatch::CreateNetworkAccessManager() {
    std::shared_ptr<QNetworkAccessManager> manager = _managers->CreateNetworkAccessManager();
    QObject::connect(manager.get(), &QNetworkAccessManager::sslErrors,
                     [seen = _seen](QNetworkReply*, const QList<QSslError>&) { seen->isTrusted = false; });
    // Connected before the library's, so the body is still to be had.
    QObject::connect(manager.get(), &QNetworkAccessManager::finished,
                     [seen = _seen](QNetworkReply* reply) { _Look(*reply, *seen); });
    return manager;
}

void SyncConfigWatch::_Look(QNetworkReply& reply, Seen& seen) {
    // A reply that was given up is closed.
    const QByteArray body = reply.isOpen() ? reply.peek(reply.bytesAvailable()) : QByteArray();
    seen.url = reply.url();
    seen.answer.status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    seen.answer.contentType = reply.rawHeader("Content-Type");
    seen.answer.firstBytes = body.left(AnswerSummary::FirstBytesLimit);
    seen.cause = CauseOf(reply.error(), seen.isTrusted);
    if (reply.error() == QNetworkReply::OperationCanceledError) {
        seen.problem = QStringLiteral("nothing was heard for too long");
    } else if (reply.error() != QNetworkReply::NoError) {
        seen.problem = reply.errorString();
    } else if (seen.answer.status != 200) {
        seen.problem = QStringLiteral("the status is unexpected for this request");
    } else {
        seen.problem = ProblemOf(body);
    }
}

bool SyncConfigWatch::IsNothingPublished() const {
    return LastAnswer().status == HttpStatus::NotFound || LastAnswer().status == HttpStatus::Gone;
}

void SyncConfigWatch::RequireDocument() const {
    const AnswerSummary& answer = _seen->answer;
    if (answer.status >= HttpStatus::BadRequest) {
        QString message = QStringLiteral("Failed to fetch the sync configuration, URL: %1, status: %2.")
                              .arg(_seen->url.toString(), QString::number(answer.status));
        if (!_seen->isTrusted) {
            message += QStringLiteral(
                " The server's certificate is not trusted, so it was given no credentials; --ca-file names one that "
                "is.");
        }
        throw sync::http::HttpException(message, answer.status, _seen->url);
    }
    if (!_seen->problem.isEmpty()) {
        throw TransactionError("GET", _seen->url, _seen->problem, answer, _seen->cause);
    }
}

}  // namespace library
}  // namespace ovsync
