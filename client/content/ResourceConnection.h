#pragma once

#include <QAuthenticator>
#include <QUrl>

#include "client/content/ResourceChange.h"
#include "client/wire/HttpConnection.h"

namespace ovsync {
namespace content {

/// Removes, moves and copies files, and copies folders, over a connection of its own. Not thread-safe.
///
/// An operation throws HttpException for an answer that does not say that all of it was done, with its status, and
/// TransactionError when no whole answer came. Both messages name the URL, the status, the content type and the first
/// bytes of what came instead.
///
/// \code
/// const ovsync::wire::ConnectionSettings settings;
/// ovsync::content::ResourceConnection connection(settings, QAuthenticator());
/// const QUrl from(QStringLiteral("http://localhost:8080/plan.dwg"));
/// const QUrl to(QStringLiteral("http://localhost:8080/old/plan.dwg"));
/// connection.Move(from, to, ovsync::content::ResourceConnection::Overwriting::No);
/// \endcode
class ResourceConnection {
public:
    /// What becomes of a file that is in the way.
    enum class Overwriting { No, Yes };

    /// A null `credentials` stands for none.
    ResourceConnection(const wire::ConnectionSettings& settings, const QAuthenticator& credentials);

    void Remove(const QUrl& url);
    /// Status 412 of what is thrown says that something is at `to`.
    void Move(const QUrl& from, const QUrl& to, Overwriting overwriting);
    /// With all that lies in it. Status 412 as above.
    void Copy(const QUrl& from, const QUrl& to, Overwriting overwriting);

private:
    void _Perform(ResourceChange change);
    void _Transfer(const QByteArray& method, const QUrl& from, const QUrl& to, Overwriting overwriting,
                   const wire::HttpTransaction::Headers& headers);

    wire::HttpConnection _session;
};

}  // namespace content
}  // namespace ovsync
