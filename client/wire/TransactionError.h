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
    /// `url` may hold a user and a password; they are left out of the message.
    TransactionError(const QByteArray& method, const QUrl& url, const QString& reason, const AnswerSummary& answer);
};

}  // namespace wire
}  // namespace ovsync
