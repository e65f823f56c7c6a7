#include "client/library/ServiceConnection.h"

#include <utility>

#include "client/changes/FolderChanges.h"
#include "client/changes/GivenListing.h"
#include "client/content/ContentConnection.h"
#include "client/library/DrovaneHttp.h"
#include "client/library/RequestAuthenticatorFactory.h"
#include "client/library/ServerConfigManager.h"
#include "client/library/SyncConfigWatch.h"
#include "client/requests/HttpFactory.h"
#include "client/requests/PropfindRequest.h"
#include "client/requests/RequestManager.h"
#include "client/requests/SharedListing.h"
#include "client/requests/UrlBuilder.h"
#include "client/wire/HttpStatus.h"
#include "dvsync/DrovaneCustomFileConfigUpdater.h"
#include "dvsync/DrovaneRemoteFolderManager.h"
#include "dvsync/ExternalSyncConfig.h"
#include "dvsync/ExternalSyncConfigManager.h"
#include "dvsync/ResourceMapping.h"
#include "host/core/SyncException.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace library {

using requests::AccountConnection;
using requests::HttpFactory;
using requests::IRequestSender;
using requests::RequestManager;
using requests::SharedListing;
using requests::UrlBuilder;

namespace {

// There is one server at a time.
const int TheServerId = 1;

wire::ConnectionSettings Unlimited(const wire::ConnectionSettings& settings) {
    wire::ConnectionSettings unlimited = settings;
    unlimited.bandwidth.reset();
    return unlimited;
}

/// What a service published at the moment when it was asked, for whoever would ask it again for each value.
class PublishedConfig : public sync::interf::IExternalSyncConfigManager {
public:
    explicit PublishedConfig(const sync::dv::dvsync::ExternalSyncConfig& config) : _config(config) {}

    sync::dv::dvsync::ExternalSyncConfig GetExternalSyncConfig() override { return _config; }

private:
    const sync::dv::dvsync::ExternalSyncConfig _config;
};

class OneFileManager : public sync::interf::factory::IRemoteFileManagerFactory {
public:
    explicit OneFileManager(std::shared_ptr<sync::interf::IRemoteFileManager> manager) : _manager(std::move(manager)) {}

    std::shared_ptr<sync::interf::IRemoteFileManager> CreateRemoteFileManager(int /*serverKey*/) override {
        return _manager;
    }

private:
    const std::shared_ptr<sync::interf::IRemoteFileManager> _manager;
};

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
    : _credentials(credentials),
      _settings(settings),
      _authenticators(std::make_shared<RequestAuthenticatorFactory>(credentials.user(), credentials.password())),
      _connection(std::make_shared<AccountConnection>(Unlimited(settings), credentials)),
      _urlBuilder(std::make_shared<UrlBuilder>()) {
    _account.baseUrl = baseUrl;
    _configuration = std::make_shared<Configuration>(_account);
    _networkAccess = std::make_shared<NetworkAccessManagerFactory>(_authenticators, TheServerId, baseUrl, settings);
    _ofThread = std::make_unique<ThreadConfiguration>(_configuration);
    _files = std::make_shared<ListedFiles>(_NewFileManagers(_connection)->CreateRemoteFileManager(TheServerId));
    _folders = _NewFolderManager(_connection);
}

std::optional<FolderListing> ServiceConnection::List(sync::config::FolderConfiguration folder) {
    const auto listing = std::make_shared<SharedListing>(_connection);
    // The folders come first because they are few: whoever reads an answer first works on a copy of what it changes.
    const auto folders = _NewFolderManager(listing)->GetNameSortedDirsByFolder(folder);
    std::shared_ptr<QVector<sync::config::FileConfiguration>> files;
    const auto fileManager = _NewFileManagers(listing)->CreateRemoteFileManager(TheServerId);
    if (fileManager->GetNameSortedFilesByFolder(folder, files) == wire::HttpStatus::NotFound) {
        return std::nullopt;
    }
    return FolderListing{*folders, *files};
}

std::shared_ptr<sync::interf::IExternalSyncConfigManager> ServiceConnection::FetchSyncConfig() {
    const auto watch = std::make_shared<SyncConfigWatch>(_networkAccess);
    sync::dv::dvsync::ExternalSyncConfigManager manager(std::make_shared<DrovaneHttp>(_account), watch);
    auto published = std::make_shared<PublishedConfig>(manager.GetExternalSyncConfig());
    _keptAnswer = watch->LastAnswer();
    if (watch->IsNothingPublished()) {
        return nullptr;
    }
    watch->RequireDocument();
    return published;
}

std::unique_ptr<sync::interf::ICustomFileConfigUpdater> ServiceConnection::NewUpdater(
    std::shared_ptr<sync::interf::IFileConfigManager> records) {
    _configuration->SetRecords(std::move(records));
    auto updater =
        std::make_unique<sync::dv::dvsync::DrovaneCustomFileConfigUpdater>(std::make_shared<OneFileManager>(_files));
    // It has them now, and they may be what keeps others from the folder.
    _configuration->SetRecords(nullptr);
    return updater;
}

std::optional<FoundResource> ServiceConnection::Find(const QString& serverPath) {
    if (serverPath.isEmpty()) {
        return FoundResource{true, {}};
    }
    const auto result = _Ask(serverPath, sync::http::DAVPropfindRequest::Resource);
    if (!result) {
        return std::nullopt;
    }
    // A file that was asked for stands among the file-like entries, a collection does not.
    if (result->fileResponses.isEmpty()) {
        return FoundResource{true, {}};
    }
    return FoundResource{
        false, sync::dv::dvsync::BuildFileConfigFromFindResponse(
                   Folder(serverPath.left(qMax(0, serverPath.lastIndexOf(QLatin1Char('/'))))), result->singleResponse)};
}

bool ServiceConnection::IsEmpty(const QString& serverPath) {
    const auto result = _Ask(serverPath + QLatin1Char('/'), sync::http::DAVPropfindRequest::Children);
    return !result || (result->collectionResponses.isEmpty() && result->fileResponses.isEmpty());
}

std::shared_ptr<sync::http::DAVPropfindResult> ServiceConnection::_Ask(const QString& path,
                                                                       sync::http::DAVPropfindRequest::Depth depth) {
    const auto request = std::make_shared<requests::PropfindRequest>(UrlOf(path), depth);
    if (!request->IsListing()) {
        // Which server it is, nobody asks for the sake of a single file.
        request->AskForAttributes();
    }
    _connection->Execute({request}, [](const auto&, auto) {});
    const int status = request->GetStatusCode();
    if (status == wire::HttpStatus::NotFound || status == wire::HttpStatus::Gone) {
        return nullptr;
    }
    if (auto result = request->GetResult()) {
        return result;
    }
    throw sync::http::HttpException(
        QStringLiteral("PROPFIND with url %1 failed with error code %2").arg(request->Url().toString()).arg(status),
        status, request->Url());
}

std::unique_ptr<changes::IChangeSource> ServiceConnection::NewChangeSource(const QString& serverPath) {
    const auto map = [this, folder = Folder(serverPath)](const std::shared_ptr<sync::http::DAVPropfindResult>& listed,
                                                         changes::ServiceChanges& changes) {
        sync::config::FolderConfiguration asked = folder;
        std::shared_ptr<QVector<sync::config::FolderConfiguration>> folders;
        std::shared_ptr<QVector<sync::config::FileConfiguration>> files;
        _NewFolderManager(std::make_shared<changes::GivenListing>(listed))
            ->GetAllFilesAndSubFoldersByFolder(asked, folders, files);
        changes.folders += *folders;
        changes.files += *files;
    };
    return std::make_unique<changes::FolderChanges>(
        *_connection, serverPath, [this](const QString& path) { return UrlOf(path); }, map);
}

std::unique_ptr<content::IContentConnection> ServiceConnection::NewContentConnection() const {
    return std::make_unique<content::ContentConnection>(_SettingsOfTransfers(),
                                                        _authenticators->CreateAuthenticator(TheServerId));
}

std::unique_ptr<content::ResourceConnection> ServiceConnection::NewResourceConnection() const {
    return std::make_unique<content::ResourceConnection>(_SettingsOfTransfers(),
                                                         _authenticators->CreateAuthenticator(TheServerId));
}

wire::ConnectionSettings ServiceConnection::_SettingsOfTransfers() const {
    wire::ConnectionSettings settings = _settings;
    // What is shown of several transfers at once is not for one of them to say.
    settings.onProgress = nullptr;
    // Several transfers share a line that may be slow.
    settings.leastRate = 0;
    return settings;
}

qint64 ServiceConnection::SizeOf(const QString& serverPath, qint64 recorded) const {
    if (recorded >= 0) {
        return recorded;
    }
    return recorded == -1 ? _settings.listing.supplement->SizeOf(serverPath) : recorded + (Q_INT64_C(1) << 32);
}

wire::FileAttributes ServiceConnection::AttributesOf(const QString& serverPath) const {
    return _settings.listing.supplement->AttributesOf(serverPath);
}

QUrl ServiceConnection::UrlOf(const QString& serverPath) const {
    const std::shared_ptr<QUrl> url = _urlBuilder->BuildUrl(_account, serverPath);
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

std::shared_ptr<RemoteFileManagerFactory> ServiceConnection::_NewFileManagers(
    const std::shared_ptr<IRequestSender>& sender) const {
    return std::make_shared<RemoteFileManagerFactory>(_urlBuilder, std::make_shared<RequestManager>(sender),
                                                      _authenticators, std::make_shared<HttpFactory>(sender),
                                                      _networkAccess);
}

std::unique_ptr<sync::interf::IRemoteFolderManager> ServiceConnection::_NewFolderManager(
    const std::shared_ptr<IRequestSender>& sender) const {
    return std::make_unique<sync::dv::dvsync::DrovaneRemoteFolderManager>(
        _urlBuilder, TheServerId, _authenticators, std::make_shared<HttpFactory>(sender), _configuration);
}

}  // namespace library
}  // namespace ovsync
