#pragma once

#include <QString>

#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace library {

/// Gives every account the same user and password. Thread-safe.
///
/// \code
/// ovsync::library::RequestAuthenticatorFactory authenticators(QStringLiteral("ann"), QStringLiteral("secret"));
/// const QAuthenticator credentials = authenticators.CreateAuthenticator(1);
/// \endcode
class RequestAuthenticatorFactory : public sync::interf::factory::IRequestAuthenticatorFactory {
public:
    /// An empty `user` stands for no credentials.
    RequestAuthenticatorFactory(const QString& user, const QString& password);

    QAuthenticator CreateAuthenticator(int serverId) override;

private:
    const QString _user;
    const QString _password;
};

}  // namespace library
}  // namespace ovsync
