#include "QtTransport.h"

#include <QEventLoop>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <iostream>

#include "client/wire/AnswerSummary.h"
#include "client/wire/TransactionError.h"
#include "host/core/SyncException.h"

using ovsync::wire::AnswerSummary;
using ovsync::wire::HttpTransaction;
using ovsync::wire::TransactionError;
using sync::interf::IHttpRequest;

namespace {

/// Whether an answer came, whatever its status: Qt's errors beyond those of proxies are about that. Qt does not always
/// notice that a connection ended early, so the length is compared; it takes the length of a compressed body away.
/// When the last chunk of a body is missing, only the listing can tell, because its XML ends too early.
bool IsAnswer(const QNetworkReply& reply, int status, const QByteArray& body) {
    const bool hasFailed =
        reply.error() != QNetworkReply::NoError &&
        (reply.error() <= QNetworkReply::UnknownProxyError || reply.error() == QNetworkReply::ProtocolFailure);
    const bool isCutOff = body.size() < reply.header(QNetworkRequest::ContentLengthHeader).toLongLong();
    return status != 0 && !hasFailed && !isCutOff;
}

}  // namespace

QtTransport::QtTransport(sync::interf::factory::INetworkAccessManagerFactory& managers)
    : _manager(managers.CreateNetworkAccessManager()) {}

void QtTransport::Execute(const QList<std::shared_ptr<IHttpRequest>>& requests) {
    for (const std::shared_ptr<IHttpRequest>& request : requests) {
        try {
            // The HTTP factory is this host's own, so its requests are known to be transactions.
            _Send(dynamic_cast<HttpTransaction&>(*request));
        } catch (...) {
            Q_EMIT request->RequestCompleted(request, IHttpRequest::StateFailed);
            throw;
        }
        Q_EMIT request->RequestCompleted(request, IHttpRequest::StateAnswered);
    }
}

void QtTransport::_Send(HttpTransaction& transaction) {
    transaction.Forget();
    QNetworkRequest request(transaction.Url());
    // A redirected PROPFIND would be sent as a GET.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    for (const auto& header : transaction.RequestHeaders()) {
        request.setRawHeader(header.first, header.second);
    }
    const std::unique_ptr<QNetworkReply> reply(
        _manager->sendCustomRequest(request, transaction.Method(), transaction.RequestBody()));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();

    const QByteArray body = reply->readAll();
    AnswerSummary answer;
    answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer.contentType = reply->rawHeader("Content-Type");
    answer.firstBytes = body.left(AnswerSummary::FirstBytesLimit);
    std::cerr << "own-transport: " << transaction.Method().toStdString() << ' '
              << transaction.Url().toString().toStdString() << ": " << answer.status << '\n';
    if (!IsAnswer(*reply, answer.status, body)) {
        const QString reason =
            reply->error() == QNetworkReply::NoError ? QStringLiteral("the answer was cut off") : reply->errorString();
        throw TransactionError(transaction.Method(), transaction.Url(), reason, answer);
    }
    try {
        transaction.OnHeaders(answer.status, reply->rawHeaderPairs());
        transaction.OnBody(body.constData(), static_cast<size_t>(body.size()));
        transaction.OnEnd();
    } catch (const sync::core::SyncException& refusal) {
        transaction.Forget();
        throw TransactionError(transaction.Method(), transaction.Url(), refusal.Message(), answer);
    }
}
