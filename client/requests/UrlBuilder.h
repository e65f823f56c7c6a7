#pragma once

#include <QString>
#include <QUrl>
#include <memory>

#include "host/interfaces/IUrlBuilder.h"

namespace ovsync {
namespace requests {

/// Appends server paths to the URL of a server, whose own path stays in front. Every character of a server path but
/// letters, digits and -._~/ is percent-encoded as UTF-8. Thread-safe.
///
/// \code
/// sync::config::ServerConfiguration account;
/// account.baseUrl = QUrl(QStringLiteral("http://localhost:8080"));
/// ovsync::requests::UrlBuilder urls;
/// const auto url = urls.BuildUrl(account, QStringLiteral("Projects/b c.txt"));  // .../Projects/b%20c.txt
/// const auto none = urls.BuildUrl(account, QStringLiteral("Projects/../c.txt"));  // empty
/// \endcode
class UrlBuilder : public sync::interf::IUrlBuilder {
public:
    /// Empty path segments are left out, but a trailing '/' stays. Empty when `server` has no http or https URL, and
    /// when `serverPath` has a '.' or '..' segment, a NUL or half of a surrogate pair. A user, a password, a query and
    /// a fragment of the server's URL are left out.
    std::shared_ptr<QUrl> BuildUrl(const sync::config::ServerConfiguration& server, const QString& serverPath) override;

    /// Ends in '/'. Ids that the client made up for a server without ids lead to the path that they stand for. Empty as
    /// above, for a kind by id without an id, for a folder to be created without a name, for an id or a name that is
    /// '.' or '..', and for a kind that is no FolderUrlKind.
    std::shared_ptr<QUrl> BuildFolderUrl(const sync::config::ServerConfiguration& server,
                                         const sync::config::FolderConfiguration& folder, const QString& fileName,
                                         int urlKind) override;

private:
    /// `below` is encoded.
    static std::shared_ptr<QUrl> _BuildUrlById(const sync::config::ServerConfiguration& server, const QString& id,
                                               const QByteArray& below);
};

}  // namespace requests
}  // namespace ovsync
