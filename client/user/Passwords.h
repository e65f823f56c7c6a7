#pragma once

#include <QAuthenticator>
#include <QString>

#include "client/user/Keyring.h"

namespace ovsync {
namespace user {

/// What this user has written down of passwords: in the keyring of the desktop, and in ~/.netrc (or the file that the
/// environment variable NETRC names). Not thread-safe; see Keyring.
class Passwords {
public:
    enum class Place { Keyring, Netrc };

    /// The credentials of `user` at `host`; without a user those that ~/.netrc has for the host. Null when there are
    /// none. Throws library::NetrcError.
    QAuthenticator Find(const QString& host, const QString& user);

    /// Writes it into the keyring, and where there is none into ~/.netrc. Throws as WriteToNetrc does when neither
    /// can be done.
    Place Keep(const QString& host, const QString& user, const QString& password);

private:
    Keyring _keyring;
};

}  // namespace user
}  // namespace ovsync
