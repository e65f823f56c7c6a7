#include "client/cli/Connection.h"

#include <QCoreApplication>
#include <utility>

#include "client/cli/Password.h"
#include "client/cli/PublishedConfig.h"
#include "client/cli/RemoteFileManagerFactory.h"
#include "client/http/AccountSessions.h"
#include "client/http/ContentSession.h"
#include "client/http/DrovaneHttp.h"
#include "client/http/HttpFactory.h"
#include "client/http/Netrc.h"
#include "client/http/RequestAuthenticatorFactory.h"
#include "client/http/RequestManager.h"
#include "client/http/ServerConfigManager.h"
#include "client/http/SyncConfigWatch.h"
#include "client/http/UrlBuilder.h"
#include "dvsync/DrovaneCustomFileConfigUpdater.h"
#include "dvsync/ExternalSyncConfigManager.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace cli {

namespace {

// The command line knows one server at a time.
const int TheServerId = 1;

}  // namespace

class Connection::Configuration : public sync::interf::factory::IConfigurationFactory {
public:
    explicit Configuration(const sync::config::ServerConfiguration& account) : _account(account) {}

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return std::make_shared<http::ServerConfigManager>(
            QMap<int, sync::config::ServerConfiguration>{{TheServerId, _account}});
    }

    std::shared_ptr<sync::interf::IFileConfigManager> CreateFileConfigManager() override {
        if (!_records) {
            throw sync::core::SyncException(QStringLiteral("There are no records of synced files here."));
        }
        return _records;
    }

    void SetRecords(std::shared_ptr<sync::interf::IFileConfigManager> records) { _records = std::move(records); }

private:
    const sync::config::ServerConfiguration _account;
    std::shared_ptr<sync::interf::IFileConfigManager> _records;
};

Connection::Connection(const Location& location, const ConnectionOptions& options) : _settings(options.session) {
    const QString host = location.baseUrl.host();
    const QString user = options.user.isEmpty() ? location.user : options.user;
    if (user.isEmpty()) {
        const QAuthenticator listed = http::NetrcCredentials(host);
        _authenticators = std::make_shared<http::RequestAuthenticatorFactory>(listed.user(), listed.password());
    } else {
        _authenticators = std::make_shared<http::RequestAuthenticatorFactory>(user, FindPassword(user, host));
    }

    const auto sessions = std::make_shared<http::AccountSessions>(options.session);
    const auto httpFactory = std::make_shared<http::HttpFactory>(sessions);
    const auto urlBuilder = std::make_shared<http::UrlBuilder>();
    _account.baseUrl = location.baseUrl;
    _configuration = std::make_shared<Configuration>(_account);
    _session = sessions->Of(TheServerId, *_authenticators);
    _networkAccess = std::make_shared<http::NetworkAccessManagerFactory>(_authenticators, TheServerId, location.baseUrl,
                                                                         options.session);
    sync::factory::ConfigurationFactory::Install(_configuration);
    _fileManagers = std::make_shared<RemoteFileManagerFactory>(
        urlBuilder, std::make_shared<http::RequestManager>(_session), _authenticators, httpFactory, _networkAccess);
    _files = _fileManagers->CreateRemoteFileManager(TheServerId);
    _folders = std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(urlBuilder, TheServerId, _authenticators,
                                                                              httpFactory, _configuration);
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

std::unique_ptr<sync::interf::ICustomFileConfigUpdater> Connection::NewUpdater(
    std::shared_ptr<sync::interf::IFileConfigManager> records) {
    _configuration->SetRecords(std::move(records));
    return std::make_unique<sync::dv::dvsync::DrovaneCustomFileConfigUpdater>(_fileManagers);
}

std::unique_ptr<http::IContentSession> Connection::NewContentSession() const {
    http::HttpSessionSettings settings = _settings;
    // What is shown of several transfers at once is not for one of them to say.
    settings.onProgress = nullptr;
    // Several transfers share a line that may be slow.
    settings.leastRate = 0;
    return std::make_unique<http::ContentSession>(settings, _authenticators->CreateAuthenticator(TheServerId));
}

QUrl Connection::UrlOf(const QString& serverPath) const {
    const std::shared_ptr<QUrl> url = http::UrlBuilder().BuildUrl(_account, serverPath);
    return url ? *url : QUrl();
}

sync::config::FolderConfiguration Connection::Folder(const QString& serverPath) const {
    sync::config::FolderConfiguration folder;
    folder.serverKey = TheServerId;
    folder.serverId = TheServerId;
    folder.name = serverPath.mid(serverPath.lastIndexOf(QLatin1Char('/')) + 1);
    folder.serverPath = serverPath;
    folder.serverRootPath = serverPath;
    return folder;
}

}  // namespace cli
}  // namespace ovsync
