#include "client/library/NetworkAccessManagerFactory.h"

#include <QAuthenticator>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>

namespace ovsync {
namespace library {

using wire::ConnectionSettings;

namespace {

class EnvironmentProxyFactory : public QNetworkProxyFactory {
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override { return systemProxyForQuery(query); }
};

/// The certificates to trust can only be set request by request.
class TrustingNetworkAccessManager : public QNetworkAccessManager {
public:
    explicit TrustingNetworkAccessManager(const QList<QSslCertificate>& trusted) : _trusted(trusted) {}

protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request, QIODevice* body) override {
        QNetworkRequest trusting = request;
        QSslConfiguration configuration = request.sslConfiguration();
        configuration.setCaCertificates(_trusted);
        trusting.setSslConfiguration(configuration);
        return QNetworkAccessManager::createRequest(operation, trusting, body);
    }

private:
    const QList<QSslCertificate> _trusted;
};

bool IsSameServer(const QUrl& a, const QUrl& b) {
    const int defaultPort = a.scheme() == QLatin1String("https") ? 443 : 80;
    return a.scheme() == b.scheme() && a.host() == b.host() && a.port(defaultPort) == b.port(defaultPort);
}

}  // namespace

NetworkAccessManagerFactory::NetworkAccessManagerFactory(
    const std::shared_ptr<sync::interf::factory::IRequestAuthenticatorFactory>& authenticators, int serverId,
    const QUrl& accountUrl, const ConnectionSettings& settings)
    : _credentials(authenticators->CreateAuthenticator(serverId)), _accountUrl(accountUrl), _settings(settings) {}

std::shared_ptr<QNetworkAccessManager> NetworkAccessManagerFactory::CreateNetworkAccessManager() {
    std::shared_ptr<QNetworkAccessManager> manager;
    if (_settings.caFile.isEmpty()) {
        manager = std::make_shared<QNetworkAccessManager>();
    } else {
        manager = std::make_shared<TrustingNetworkAccessManager>(QSslCertificate::fromPath(_settings.caFile));
    }
    manager->setProxyFactory(new EnvironmentProxyFactory);
    manager->setTransferTimeout(static_cast<int>(_settings.silenceLimit.count()));
    const auto isTrusted = std::make_shared<bool>(true);
    QObject::connect(manager.get(), &QNetworkAccessManager::sslErrors,
                     [isTrusted](QNetworkReply*, const QList<QSslError>&) { *isTrusted = false; });
    QObject::connect(manager.get(), &QNetworkAccessManager::authenticationRequired,
                     [credentials = _credentials, account = _accountUrl, digestHosts = _settings.digestHosts,
                      isTrusted](QNetworkReply* reply, QAuthenticator* authenticator) {
                         // Asked a second time: they were wrong. Left unanswered, the 401 becomes the reply's.
                         static const char* const answered = "ovsyncCredentialsGiven";
                         if (credentials.isNull() || reply->property(answered).toBool() || !*isTrusted ||
                             !IsSameServer(reply->url(), account) || digestHosts->ForbidBasic(account)) {
                             return;
                         }
                         reply->setProperty(answered, true);
                         authenticator->setUser(credentials.user());
                         authenticator->setPassword(credentials.password());
                     });
    return manager;
}

}  // namespace library
}  // namespace ovsync
