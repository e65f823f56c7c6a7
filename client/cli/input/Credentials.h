#pragma once

#include <QAuthenticator>
#include <QString>

namespace ovsync {
namespace input {

/// Those of `user` at `host`: the password from the environment variable OVSYNC_PASSWORD, else from ~/.netrc (or the
/// file that the variable NETRC names), else from a prompt on the terminal. Throws UsageError when there is none and no
/// terminal to ask at. Without a user, what ~/.netrc has for the host, which may be nothing.
QAuthenticator FindCredentials(const QString& user, const QString& host);

}  // namespace input
}  // namespace ovsync
