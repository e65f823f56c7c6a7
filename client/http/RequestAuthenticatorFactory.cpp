#include "client/http/RequestAuthenticatorFactory.h"

namespace ovsync {
namespace http {

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

}  // namespace http
}  // namespace ovsync
