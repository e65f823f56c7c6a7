#include "client/library/RequestAuthenticatorFactory.h"

namespace ovsync {
namespace library {

RequestAuthenticatorFactory::RequestAuthenticatorFactory(const QString& user, const QString& password)
    : _user(user), _password(password) {}

QAuthenticator RequestAuthenticatorFactory::CreateAuthenticator(int /*serverId*/) {
    QAuthenticator authenticator;
    if (!_user.isEmpty()) {
        authenticator.setUser(_user);
        authenticator.setPassword(_password);
    }
    return authenticator;
}

}  // namespace library
}  // namespace ovsync
