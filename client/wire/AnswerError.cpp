#include "client/wire/AnswerError.h"

#include <QByteArrayList>

#include "client/wire/TransactionError.h"

namespace ovsync {
namespace wire {

AnswerError::AnswerError(const QByteArray& method, const QUrl& url, const QString& reason, const AnswerSummary& answer)
    : HttpException(TransactionError(method, url, reason, answer).Message(), answer.status, url),
      _method(method),
      _answer(answer) {}

bool AnswerError::IsOfWriting() const {
    return !QByteArrayList({"GET", "HEAD", "PROPFIND", "REPORT"}).contains(_method);
}

}  // namespace wire
}  // namespace ovsync
