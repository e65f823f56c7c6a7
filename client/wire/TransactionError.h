#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include "client/wire/AnswerSummary.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace wire {

/// What came back cannot be taken for an answer. The message names what was asked, what is wrong with what came, and
/// the answer's status, content type and first bytes. It holds no credentials that the client sent. A value.
class TransactionError : public sync::core::SyncException {
public:
    enum class Cause {
        /// An answer came that does not fit the request; the reason says why.
        WrongAnswer,
        UnknownHost,
        UnknownProxy,
        NoConnection,
        /// No connection was made in time.
        ConnectTimeout,
        /// Neither TLS nor HTTP came out of it.
        WrongProtocol,
        NotTrusted,
        /// The certificate is another server's.
        WrongName,
        Expired,
        /// The file of certificates to trust cannot be read.
        NoCertificates,
        Silence,
        Slowness,
        CutOff,
        Cancelled,
        Other
    };

    /// `url` may hold a user and a password; they are left out of the message.
    TransactionError(const QByteArray& method, const QUrl& url, const QString& reason, const AnswerSummary& answer,
                     Cause cause = Cause::WrongAnswer);

    Cause Why() const { return _cause; }
    /// Whether an answer came, which cannot be taken for one, or not whole.
    bool IsAnswerWrong() const { return _cause == Cause::WrongAnswer || _cause == Cause::CutOff; }
    const QString& Reason() const { return _reason; }
    const AnswerSummary& Answer() const { return _answer; }

private:
    Cause _cause;
    QString _reason;
    AnswerSummary _answer;
};

}  // namespace wire
}  // namespace ovsync
