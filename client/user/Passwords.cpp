#include "client/user/Passwords.h"

#include "client/library/Netrc.h"
#include "client/user/NetrcFile.h"

namespace ovsync {
namespace user {

QAuthenticator Passwords::Find(const QString& host, const QString& user) {
    const std::optional<QString> kept = user.isEmpty() ? std::nullopt : _keyring.Read(host, user);
    if (!kept) {
        return library::NetrcCredentials(host, user);
    }
    QAuthenticator credentials;
    credentials.setUser(user);
    credentials.setPassword(*kept);
    return credentials;
}

Passwords::Place Passwords::Keep(const QString& host, const QString& user, const QString& password) {
    if (_keyring.Write(host, user, password)) {
        return Place::Keyring;
    }
    WriteToNetrc(host, user, password);
    return Place::Netrc;
}

}  // namespace user
}  // namespace ovsync
