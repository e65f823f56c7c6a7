#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>
#include <QUrl>
#include <cstddef>

namespace ovsync {
namespace http {

/// One request as a HttpSession sends it, and the receiver of its answer. A kind of request is a class that implements
/// this. Not thread-safe.
///
/// An operation that receives may throw a SyncException whose message says what is wrong with the answer; the session
/// then ends the exchange with an ExchangeError.
class Exchange {
public:
    using Headers = QList<QPair<QByteArray, QByteArray>>;
    /// Names in lower case. Of a header that came more than once, the values joined with ", ".
    using AnswerHeaders = QMap<QByteArray, QByteArray>;

    virtual ~Exchange() = default;

    virtual QByteArray Method() const = 0;
    /// Absolute, http or https.
    virtual QUrl Url() const = 0;
    virtual Headers RequestHeaders() const = 0;
    /// Empty when the request has none.
    virtual QByteArray RequestBody() const = 0;

    /// Before anything is sent: what an earlier execution left is to be forgotten.
    virtual void OnStart() = 0;
    /// Once, with the final answer: neither an interim one nor one that only asked for credentials.
    virtual void OnHeaders(int status, const AnswerHeaders& headers) = 0;
    /// Any number of times after OnHeaders, the body in pieces, uncompressed.
    virtual void OnBody(const char* bytes, size_t size) = 0;
    /// The body came whole.
    virtual void OnEnd() = 0;
};

}  // namespace http
}  // namespace ovsync
