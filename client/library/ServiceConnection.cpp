#include "client/library/ServiceConnection.h"

#include <utility>

#include "client/content/ContentConnection.h"
#include "client/library/DrovaneHttp.h"
#include "client/library/PublishedConfig.h"
#include "client/library/RemoteFileManagerFactory.h"
#include "client/library/RequestAuthenticatorFactory.h"
#include "client/library/ServerConfigManager.h"
#include "client/library/SyncConfigWatch.h"
#include "client/requests/AccountConnections.h"
#include "client/requests/HttpFactory.h"
#include "client/requests/RequestManager.h"
#include "client/requests/UrlBuilder.h"
#include "client/wire/HttpStatus.h"
#include "dvsync/DrovaneCustomFileConfigUpdater.h"
#include "dvsync/ExternalSyncConfigManager.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace library {

namespace {

// There is one server at a time.
const int TheServerId = 1;

}  // namespace

class ServiceConnection::Configuration : public sync::interf::factory::IConfigurationFactory {
public:
    explicit Configuration(const sync::config::ServerConfiguration& account) : _account(account) {}

    std::shared_ptr<sync::interf::IServerConfigManager> CreateServerConfigManager() override {
        return std::make_shared<ServerConfigManager>(
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

ServiceConnection::ServiceConnection(const QUrl& baseUrl, const QAuthenticator& credentials,
                                     const wire::ConnectionSettings& settings)
    : _settings(settings),
      _authenticators(std::make_shared<RequestAuthenticatorFactory>(credentials.user(), credentials.password())) {
    const auto sessions = std::make_shared<requests::AccountConnections>(settings);
    const auto httpFactory = std::make_shared<requests::HttpFactory>(sessions);
    const auto urlBuilder = std::make_shared<requests::UrlBuilder>();
    _account.baseUrl = baseUrl;
    _configuration = std::make_shared<Configuration>(_account);
    _session = sessions->Of(TheServerId, *_authenticators);
    _networkAccess = std::make_shared<NetworkAccessManagerFactory>(_authenticators, TheServerId, baseUrl, settings);
    _ofThread = std::make_unique<ThreadConfiguration>(_configuration);
    _fileManagers = std::make_shared<RemoteFileManagerFactory>(
        urlBuilder, std::make_shared<requests::RequestManager>(_session), _authenticators, httpFactory, _networkAccess);
    _files = _fileManagers->CreateRemoteFileManager(TheServerId);
    _folders = std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(urlBuilder, TheServerId, _authenticators,
                                                                              httpFactory, _configuration);
}

std::optional<FolderListing> ServiceConnection::List(sync::config::FolderConfiguration folder) {
    // The library asks for folders and for files by the same request, which is sent once. The folders come first
    // because they are few: whoever reads an answer first works on a copy of what it changes.
    _session->ShareNextListing();
    const auto folders = _folders->GetNameSortedDirsByFolder(folder);
    std::shared_ptr<QVector<sync::config::FileConfiguration>> files;
    if (_files->GetNameSortedFilesByFolder(folder, files) == wire::HttpStatus::NotFound) {
        return std::nullopt;
    }
    return FolderListing{*folders, *files};
}

std::shared_ptr<sync::interf::IExternalSyncConfigManager> ServiceConnection::FetchSyncConfig() {
    const auto watch = std::make_shared<SyncConfigWatch>(_networkAccess);
    sync::dv::dvsync::ExternalSyncConfigManager manager(std::make_shared<DrovaneHttp>(_account), watch);
    auto published = std::make_shared<PublishedConfig>(manager.GetExternalSyncConfig());
    _configAnswer = watch->LastAnswer().Text();
    watch->RequireDocument();
    return published;
}

std::unique_ptr<sync::interf::ICustomFileConfigUpdater> ServiceConnection::NewUpdater(
    std::shared_ptr<sync::interf::IFileConfigManager> records) {
    _configuration->SetRecords(std::move(records));
    auto updater = std::make_unique<sync::dv::dvsync::DrovaneCustomFileConfigUpdater>(_fileManagers);
    // It has them now, and they may be what keeps others from the folder.
    _configuration->SetRecords(nullptr);
    return updater;
}

std::unique_ptr<content::IContentConnection> ServiceConnection::NewContentConnection() const {
    wire::ConnectionSettings settings = _settings;
    // What is shown of several transfers at once is not for one of them to say.
    settings.onProgress = nullptr;
    // Several transfers share a line that may be slow.
    settings.leastRate = 0;
    return std::make_unique<content::ContentConnection>(settings, _authenticators->CreateAuthenticator(TheServerId));
}

QUrl ServiceConnection::UrlOf(const QString& serverPath) const {
    const std::shared_ptr<QUrl> url = requests::UrlBuilder().BuildUrl(_account, serverPath);
    return url ? *url : QUrl();
}

sync::config::FolderConfiguration ServiceConnection::Folder(const QString& serverPath) const {
    sync::config::FolderConfiguration folder;
    folder.serverKey = TheServerId;
    folder.serverId = TheServerId;
    folder.name = serverPath.mid(serverPath.lastIndexOf(QLatin1Char('/')) + 1);
    folder.serverPath = serverPath;
    folder.serverRootPath = serverPath;
    return folder;
}

}  // namespace library
}  // namespace ovsync
