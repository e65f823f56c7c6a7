#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QUrl>
#include <cstddef>

#include "client/wire/IContentSource.h"

namespace ovsync {
namespace wire {

/// One request as a HttpConnection sends it, and the receiver of its answer. A kind of request is a class that
/// implements this. Not thread-safe.
///
/// An operation that receives, or gives a body in pieces, may throw a SyncException whose message says what is wrong;
/// the connection then breaks the transaction off and ends it with a TransactionError.
///
/// \code
/// #include "client/wire/HttpConnection.h"
///
/// class OptionsQuestion : public ovsync::wire::HttpTransaction {
/// public:
///     QByteArray Method() const override { return "OPTIONS"; }
///     QUrl Url() const override { return QUrl(QStringLiteral("http://localhost:8080/")); }
///     void Forget() override { _compliance.clear(); }
///     void OnHeaders(int, const Headers& headers) override { _compliance = ValueOf(headers, "DAV"); }
///     QByteArray Compliance() const { return _compliance; }
///
/// private:
///     QByteArray _compliance;
/// };
/// OptionsQuestion question;
/// ovsync::wire::HttpConnection(ovsync::wire::ConnectionSettings(), QAuthenticator()).Perform(question);
/// const QByteArray compliance = question.Compliance();  // "1, drovane"
/// \endcode
class HttpTransaction {
public:
    using Headers = QList<QPair<QByteArray, QByteArray>>;

    virtual ~HttpTransaction() = default;

    virtual QByteArray Method() const = 0;
    /// Absolute, http or https.
    virtual QUrl Url() const = 0;
    virtual Headers RequestHeaders() const { return {}; }
    /// Empty when the request has none.
    virtual QByteArray RequestBody() const { return QByteArray(); }
    /// Where the body comes from when it is sent in pieces, in place of RequestBody; null when it is not.
    virtual IContentSource* StreamedBody() { return nullptr; }
    /// How many bytes StreamedBody gives.
    virtual qint64 StreamedBodySize() const { return 0; }

    /// Whether the body may come compressed. One that may not is handed on as it came.
    virtual bool MayComeCompressed() const { return true; }

    /// Whether the head of the answer says all there is to know. The body is then not handed on, nor waited for for
    /// long (some never end), and how it ends does not matter.
    virtual bool IsHeadEnough() const { return false; }

    /// The server says that what was asked for is a collection, whose URL ends in '/'. Returns whether Url has that
    /// from now on; the request is then sent again.
    virtual bool TakeSlash() { return false; }

    /// What a transaction left is to be forgotten: before anything is sent, and when what came is no answer.
    virtual void Forget() = 0;
    /// Once, with the final answer: neither an interim one nor one that only asked for credentials.
    /// The headers are in the order in which they came, their names as they were sent.
    virtual void OnHeaders(int status, const Headers& headers) = 0;
    /// Any number of times after OnHeaders, the body in pieces, uncompressed where MayComeCompressed.
    virtual void OnBody(const char* /*bytes*/, size_t /*size*/) {}
    /// The body came completely.
    virtual void OnEnd() {}

    /// The value of the header `name`, in any letter case; of one that came more than once the values joined with ", ",
    /// of one that did not come none.
    static QByteArray ValueOf(const Headers& headers, const char* name);

    /// Whether the headers say that the body is XML.
    static bool HasXml(const Headers& headers);

    /// `url` with the '/' that the path of a collection ends in.
    static QUrl AsCollection(const QUrl& url);
};

}  // namespace wire
}  // namespace ovsync
