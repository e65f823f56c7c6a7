#include "client/cli/Connection.h"

#include <QCoreApplication>

#include "client/cli/Password.h"
#include "client/cli/PublishedConfig.h"
#include "client/http/AccountSessions.h"
#include "client/http/DrovaneHttp.h"
#include "client/http/HttpFactory.h"
#include "client/http/RequestAuthenticatorFactory.h"
#include "client/http/RequestManager.h"
#include "client/http/ServerConfigManager.h"
#include "client/http/SyncConfigWatch.h"
#include "client/http/UrlBuilder.h"
#include "dvsync/ExternalSyncConfigManager.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace cli {

namespace {

// The command line knows one server at a time.
const int TheServerId = 1;

class ConnectionConfiguration : public sync::interf::factory::IConfigurationFactory {
public:
    explicit ConnectionConfiguration(const sync::config::ServerConfiguration& account) : _account(account) {}

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return std::make_shared<http::ServerConfigManager>(
            QMap<int, sync::config::ServerConfiguration>{{TheServerId, _account}});
    }

    std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
        throw sync::core::SyncException(QStringLiteral("There are no records of synced files here."));
    }

private:
    const sync::config::ServerConfiguration _account;
};

}  // namespace

Connection::Connection(const Location& location, const ConnectionOptions& options) {
    const QString user = options.user.isEmpty() ? location.user : options.user;
    const QString password = user.isEmpty() ? QString() : FindPassword(user, location.baseUrl.host());
    const auto authenticators = std::make_shared<http::RequestAuthenticatorFactory>(user, password);

    const auto sessions = std::make_shared<http::AccountSessions>(options.session);
    const auto httpFactory = std::make_shared<http::HttpFactory>(sessions);
    const auto urlBuilder = std::make_shared<http::UrlBuilder>();
    _account.baseUrl = location.baseUrl;
    const auto configuration = std::make_shared<ConnectionConfiguration>(_account);
    _session = sessions->Of(TheServerId, *authenticators);
    _networkAccess = std::make_shared<http::NetworkAccessManagerFactory>(authenticators, TheServerId, location.baseUrl,
                                                                         options.session);
    sync::factory::ConfigurationFactory::Install(configuration);
    _files = std::make_unique<sync::dv::dvsync::DrovaneRemoteFileManager>(
        urlBuilder, std::make_shared<http::RequestManager>(_session), TheServerId, authenticators, httpFactory,
        _networkAccess, nullptr);
    _folders = std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(urlBuilder, TheServerId, authenticators,
                                                                              httpFactory, configuration);
}

Connection::~Connection() {
    sync::factory::ConfigurationFactory::Install(nullptr);
}

std::shared_ptr<sync::interf::IExternalSyncConfigManager> Connection::FetchSyncConfig() {
    int argumentCount = 1;
    char programName[] = "ovsync";
    char* arguments[] = {programName, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    const auto watch = std::make_shared<http::SyncConfigWatch>(_networkAccess);
    sync::dv::dvsync::ExternalSyncConfigManager manager(std::make_shared<http::DrovaneHttp>(_account), watch);
    auto published = std::make_shared<PublishedConfig>(manager.GetExternalSyncConfig());
    _configAnswer = watch->LastAnswer().Text();
    watch->RequireDocument();
    return published;
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
