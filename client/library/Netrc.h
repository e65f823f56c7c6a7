#pragma once

#include <QAuthenticator>
#include <QString>

#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

/// The file cannot be read, or not understood; the message names it and says why.
class NetrcError : public sync::core::SyncException {
public:
    using SyncException::SyncException;
};

/// ~/.netrc, or the file that the environment variable NETRC names. Thread-safe.
QString NetrcPath();

/// The credentials for `host` in that file, whatever the port; with a `user`, that user's, and no other's. Null when
/// there are none, or none with a password. Throws NetrcError. Thread-safe.
///
/// \code
/// #include <iostream>
///
/// const QAuthenticator credentials = ovsync::library::NetrcCredentials(QStringLiteral("drovane.example.com"));
/// if (credentials.isNull()) {
///     std::cerr << "There is no password for this server\n";
/// }
/// \endcode
QAuthenticator NetrcCredentials(const QString& host, const QString& user = QString());

}  // namespace library
}  // namespace ovsync
