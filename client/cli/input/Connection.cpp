#include "client/cli/input/Connection.h"

#include <QCoreApplication>
#include <utility>

#include "client/cli/input/Password.h"
#include "client/content/ContentSession.h"
#include "client/library/DrovaneHttp.h"
#include "client/library/Netrc.h"
#include "client/library/PublishedConfig.h"
#include "client/library/RemoteFileManagerFactory.h"
#include "client/library/RequestAuthenticatorFactory.h"
#include "client/library/ServerConfigManager.h"
#include "client/library/SyncConfigWatch.h"
#include "client/requests/AccountSessions.h"
#include "client/requests/HttpFactory.h"
#include "client/requests/RequestManager.h"
#include "client/requests/UrlBuilder.h"
#include "dvsync/DrovaneCustomFileConfigUpdater.h"
#include "dvsync/ExternalSyncConfigManager.h"
#include "host/configurationfactory/ConfigurationFactory.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace input {

using library::PublishedConfig;
using library::RemoteFileManagerFactory;

namespace {

// The command line knows one server at a time.
const int TheServerId = 1;

}  // namespace

class Connection::Configuration : public sync::interf::factory::IConfigurationFactory {
public:
    explicit Configuration(const sync::config::ServerConfiguration& account) : _account(account) {}

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return std::make_shared<library::ServerConfigManager>(
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
        const QAuthenticator listed = library::NetrcCredentials(host);
        _authenticators = std::make_shared<library::RequestAuthenticatorFactory>(listed.user(), listed.password());
    } else {
        _authenticators = std::make_shared<library::RequestAuthenticatorFactory>(user, FindPassword(user, host));
    }

    const auto sessions = std::make_shared<requests::AccountSessions>(options.session);
    const auto httpFactory = std::make_shared<requests::HttpFactory>(sessions);
    const auto urlBuilder = std::make_shared<requests::UrlBuilder>();
    _account.baseUrl = location.baseUrl;
    _configuration = std::make_shared<Configuration>(_account);
    _session = sessions->Of(TheServerId, *_authenticators);
    _networkAccess = std::make_shared<library::NetworkAccessManagerFactory>(_authenticators, TheServerId,
                                                                            location.baseUrl, options.session);
    sync::factory::ConfigurationFactory::Install(_configuration);
    _fileManagers = std::make_shared<RemoteFileManagerFactory>(
        urlBuilder, std::make_shared<requests::RequestManager>(_session), _authenticators, httpFactory, _networkAccess);
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
    const auto watch = std::make_shared<library::SyncConfigWatch>(_networkAccess);
    sync::dv::dvsync::ExternalSyncConfigManager manager(std::make_shared<library::DrovaneHttp>(_account), watch);
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

std::unique_ptr<content::IContentSession> Connection::NewContentSession() const {
    wire::HttpSessionSettings settings = _settings;
    // What is shown of several transfers at once is not for one of them to say.
    settings.onProgress = nullptr;
    // Several transfers share a line that may be slow.
    settings.leastRate = 0;
    return std::make_unique<content::ContentSession>(settings, _authenticators->CreateAuthenticator(TheServerId));
}

QUrl Connection::UrlOf(const QString& serverPath) const {
    const std::shared_ptr<QUrl> url = requests::UrlBuilder().BuildUrl(_account, serverPath);
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

}  // namespace input
}  // namespace ovsync
