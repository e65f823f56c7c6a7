#pragma once

#include <QUrl>
#include <memory>

#include "client/wire/ConnectionSettings.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace ovsync {
namespace library {

/// Makes network access managers that take their proxies from the environment, give up after the same silence as a
/// HttpConnection, trust the same certificates, and know the credentials of one account. These are given once per
/// reply, and only to the host, port and scheme of the account; never by a manager that met a certificate it does not
/// trust, even if somebody had it go on nevertheless. They are not given either where a Basic password must not be
/// sent, because whether one is asked for cannot be told. Thread-safe.
///
/// \code
/// #include <QNetworkAccessManager>
/// #include "client/library/RequestAuthenticatorFactory.h"
///
/// const auto authenticators = std::make_shared<ovsync::library::RequestAuthenticatorFactory>(
///     QStringLiteral("ann"), QStringLiteral("secret"));
/// const QUrl accountUrl(QStringLiteral("https://drovane.example.com"));
/// ovsync::library::NetworkAccessManagerFactory managers(authenticators, 1, accountUrl);
/// const std::shared_ptr<QNetworkAccessManager> manager = managers.CreateNetworkAccessManager();
/// \endcode
class NetworkAccessManagerFactory : public sync::interf::factory::INetworkAccessManagerFactory {
public:
    /// Asks `authenticators` once, here, for the credentials of the account `serverId` at `accountUrl`.
    NetworkAccessManagerFactory(
        const std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory>& authenticators, int serverId,
        const QUrl& accountUrl, const wire::ConnectionSettings& settings = wire::ConnectionSettings());

    std::shared_ptr<QNetworkAccessManager> CreateNetworkAccessManager() override;

private:
    const QAuthenticator _credentials;
    const QUrl _accountUrl;
    const wire::ConnectionSettings _settings;
};

}  // namespace library
}  // namespace ovsync
