#include "client/wire/TransactionError.h"

namespace ovsync {
namespace wire {

TransactionError::TransactionError(const QByteArray& method, const QUrl& url, const QString& reason,
                                   const AnswerSummary& answer, Cause cause)
    : SyncException(QString::fromLatin1(method) + QLatin1Char(' ') +
                    url.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo) + QLatin1String(" failed: ") + reason +
                    QLatin1String(" (") + answer.Text() + QLatin1Char(')')),
      _cause(cause),
      _reason(reason),
      _answer(answer) {}

}  // namespace wire
}  // namespace ovsync
