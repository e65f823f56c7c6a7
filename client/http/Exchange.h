#pragma once

#include <QByteArray>
#include <QList>
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

    virtual ~Exchange() = default;

    virtual QByteArray Method() const = 0;
    /// Absolute, http or https.
    virtual QUrl Url() const = 0;
    virtual Headers RequestHeaders() const = 0;
    /// Empty when the request has none.
    virtual QByteArray RequestBody() const = 0;

    /// What an exchange left is to be forgotten: before anything is sent, and when what came is no answer.
    virtual void Forget() = 0;
    /// Once, with the final answer: neither an interim one nor one that only asked for credentials.
    /// The headers are in the order in which they came, their names as they were sent.
    virtual void OnHeaders(int status, const Headers& headers) = 0;
    /// Any number of times after OnHeaders, the body in pieces, uncompressed.
    virtual void OnBody(const char* bytes, size_t size) = 0;
    /// The body came whole.
    virtual void OnEnd() = 0;

    /// The value of the header `name`, in any letter case; of one that came more than once the values joined with ", ",
    /// of one that did not come none.
    static QByteArray ValueOf(const Headers& headers, const char* name);
};

}  // namespace http
}  // namespace ovsync
