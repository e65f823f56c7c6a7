#pragma once

#include <QString>
#include <exception>
#include <functional>

#include "client/wire/AnswerSummary.h"

namespace sync {
namespace http {
class HttpException;
}
}  // namespace sync

namespace ovsync {
namespace wire {
class TransactionError;
}

namespace output {

/// What is told of a failure. A plain value.
struct ErrorMessage {
    /// What kind of failure it is, in a word for programs; ovsync(1) lists them.
    const char* kind;
    /// For people, with nothing of the protocol in it.
    QString text;
    /// In the words of where it was noticed: method, URL, status, the beginning of the answer. Empty when `text` says
    /// all.
    QString detail = QString();
    /// The answer's; 0 when there is none.
    int status = 0;
};

/// Words failures for people. All that is caught of the library, of HTTP, of the records and of the disk is worded
/// here. Thread-safe.
class ErrorText {
public:
    /// What was asked. A plain value.
    struct Context {
        /// Host and port, as a user wrote them.
        QString server;
        /// What the user named there: decoded, without a '/' at either end.
        QString path;
        /// What that has to be.
        QString thing = QStringLiteral("folder");
        /// Whether it is to go to another place there.
        bool hasTarget = false;
        /// Who logged in; empty for nobody.
        QString user = QString();
        /// Why nobody does where somebody may have been meant to; empty where that is not so.
        QString loginProblem = QString();
        /// Where the failure does not tell.
        bool isWriting = false;
        /// The last answer that came, for failures of the library, which knows the status alone. May be null.
        std::function<wire::AnswerSummary()> lastAnswer = nullptr;
    };

    explicit ErrorText(const Context& context) : _context(context) {}

    /// The same for what lies at `path` below the folder that was named.
    ErrorText Below(const QString& path) const;

    /// `error` is not null.
    ErrorMessage Of(const std::exception_ptr& error) const;

private:
    ErrorMessage _OfAnswer(const sync::http::HttpException& error) const;
    /// Of an answer that says no. Empty where there was none.
    QString _Refusal(const wire::AnswerSummary& answer, const QString& path, bool isWriting) const;
    QString _WrongAnswer(const wire::TransactionError& error) const;
    QString _Redirection(const QString& place, const QByteArray& location) const;
    QString _Place(const QString& path) const;

    const Context _context;
};

}  // namespace output
}  // namespace ovsync
