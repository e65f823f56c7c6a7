#include "client/cli/Connection.h"

#include "client/cli/Password.h"
#include "client/http/AccountSessions.h"
#include "client/http/HttpFactory.h"
#include "client/http/NetworkAccessManagerFactory.h"
#include "client/http/RequestAuthenticatorFactory.h"
#include "client/http/RequestManager.h"
#include "client/http/ServerConfigManager.h"
#include "client/http/UrlBuilder.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace cli {

namespace {

// The command line knows one server at a time.
const int TheServerId = 1;

class ConnectionConfiguration : public sync::interf::factory::IConfigurationFactory {
public:
    explicit ConnectionConfiguration(const QUrl& baseUrl) { _account.baseUrl = baseUrl; }

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return std::make_shared<http::ServerConfigManager>(
            QMap<int, sync::config::ServerConfiguration>{{TheServerId, _account}});
    }

    std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
        throw sync::core::SyncException(QStringLiteral("There are no records of synced files here."));
    }

private:
    sync::config::ServerConfiguration _account;
};

}  // namespace

Connection::Connection(const Location& location, const ConnectionOptions& options) {
    const QString user = options.user.isEmpty() ? location.user : options.user;
    const QString password = user.isEmpty() ? QString() : FindPassword(user, location.baseUrl.host());
    const auto authenticators = std::make_shared<http::RequestAuthenticatorFactory>(user, password);

    const auto sessions = std::make_shared<http::AccountSessions>(options.session);
    const auto httpFactory = std::make_shared<http::HttpFactory>(sessions);
    const auto urlBuilder = std::make_shared<http::UrlBuilder>();
    const auto configuration = std::make_shared<ConnectionConfiguration>(location.baseUrl);
    _session = sessions->Of(TheServerId, *authenticators);
    sync::factory::ConfigurationFactory::Install(configuration);
    _files = std::make_unique<sync::dv::dvsync::DrovaneRemoteFileManager>(
        urlBuilder, std::make_shared<http::RequestManager>(_session), TheServerId, authenticators, httpFactory,
        std::make_shared<http::NetworkAccessManagerFactory>(authenticators, TheServerId, location.baseUrl,
                                                            options.session),
        nullptr);
    _folders = std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(urlBuilder, TheServerId, authenticators,
                                                                              httpFactory, configuration);
}

Connection::~Connection() {
    sync::factory::ConfigurationFactory::Install(nullptr);
}

sync::config::FolderConfiguration Connection::Folder(const QString& serverPath) const {
    sync::config::FolderConfiguration folder;
    folder.serverId = TheServerId;
    folder.name = serverPath.mid(serverPath.lastIndexOf(QLatin1Char('/')) + 1);
    folder.serverPath = serverPath;
    folder.serverRootPath = serverPath;
    return folder;
}

}  // namespace cli
}  // namespace ovsync
