#pragma once

#include <QString>
#include <QUrl>
#include <memory>

#include "host/interfaces/IUrlBuilder.h"

namespace ovsync {
namespace http {

/// Appends server paths to the URL of a server, whose own path stays in front. Every character of a server path but
/// letters, digits and -._~/ is percent-encoded as UTF-8. Thread-safe.
class UrlBuilder : public sync::interf::IUrlBuilder {
public:
    /// Empty path segments are left out, but a trailing '/' stays. Empty when `server` has no http or https URL, and
    /// when `serverPath` has a '.' or '..' segment, a NUL or half of a surrogate pair. A user, a password, a query and
    /// a fragment of the server's URL are left out.
    std::shared_ptr<QUrl> BuildUrl(const sync::config::ServerConfiguration& server, const QString& serverPath) override;
};

}  // namespace http
}  // namespace ovsync
