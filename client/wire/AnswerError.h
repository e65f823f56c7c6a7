#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include "client/wire/AnswerSummary.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace wire {

/// An HttpException that also holds what was asked and what came. Its message is worded as that of a TransactionError.
/// A value.
class AnswerError : public sync::http::HttpException {
public:
    AnswerError(const QByteArray& method, const QUrl& url, const QString& reason, const AnswerSummary& answer);

    const AnswerSummary& Answer() const { return _answer; }
    /// Whether the request was to change something.
    bool IsOfWriting() const;

private:
    QByteArray _method;
    AnswerSummary _answer;
};

}  // namespace wire
}  // namespace ovsync
