#include "dvsync/DrovaneRemoteFileManager.h"

#include <QDateTime>
#include <QFileInfo>
#include <QList>
#include <QUrl>
#include <utility>

#include "dvsync/HttpFailure.h"
#include "dvsync/ResourceMapping.h"
#include "host/configurationfactory/ConfigurationFactory.h"

namespace sync {
namespace dv {
namespace dvsync {

using config::FileConfiguration;
using config::FolderConfiguration;
using http::DAVPropfindRequest;
using http::DAVPropfindResult;

namespace {

const int FileOnDiskSyncMode = 2;

bool FileChangedSince(const QDateTime& recordTime, const QString& localPath) {
    const QFileInfo file(localPath);
    if (!file.exists()) {
        return false;
    }
    // A record without a date lies before any file time.
    return !recordTime.isValid() || recordTime.secsTo(file.lastModified()) > 0;
}

}  // namespace

DrovaneRemoteFileManager::DrovaneRemoteFileManager(
    std::shared_ptr<interf::IUrlBuilder> urlBuilder_, std::shared_ptr<interf::IRequestManager> requestManager_,
    int serverId_, std::shared_ptr<interf::factory::IRequestAuthenticatorFactory> authenticatorFactory_,
    std::shared_ptr<interf::factory::IHttpFactory> httpFactory_,
    std::shared_ptr<interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory_,
    std::shared_ptr<interf::ISyncConfiguration> syncConfiguration_)
    : urlBuilder(std::move(urlBuilder_)),
      requestManager(std::move(requestManager_)),
      authenticatorFactory(std::move(authenticatorFactory_)),
      httpFactory(std::move(httpFactory_)),
      networkAccessManagerFactory(std::move(networkAccessManagerFactory_)),
      serverId(serverId_),
      serverConfiguration(
          factory::ConfigurationFactory().CreateServerConfigManager()->GetServerConfiguration(serverId)),
      syncConfiguration(std::move(syncConfiguration_)) {}

DrovaneRemoteFileManager::~DrovaneRemoteFileManager() = default;

int DrovaneRemoteFileManager::GetNameSortedFilesByFolder(FolderConfiguration& folder,
                                                         std::shared_ptr<QVector<FileConfiguration>>& files) {
    const std::shared_ptr<QUrl> url = urlBuilder->BuildUrl(serverConfiguration, folder.serverPath);
    const std::shared_ptr<DAVPropfindRequest> request =
        httpFactory->CreatePropfindRequest(url, folder.serverId, DAVPropfindRequest::Children);
    request->SetModifiedSinceTime(folder.getLastSyncTime());
    _Execute(request);

    const int status = request->GetStatusCode();
    if (status == NotFoundStatus) {
        return NotFoundStatus;
    }
    if (IsPropfindFailure(status)) {
        throw Failure("GetNameSortedFilesByFolder with url %0 failed with error code %1", ValueOf(url), status);
    }
    const std::shared_ptr<DAVPropfindResult> result = _ProcessPropfindResult(request);
    if (result && result->serverTime.isValid()) {
        folder.setLastServerSyncRequestTime(result->serverTime);
    }
    if (status == NotModifiedStatus) {
        return NotModifiedStatus;
    }
    files = BuildFileConfigsFromFindResult(folder, result);
    return 0;
}

bool DrovaneRemoteFileManager::ShouldDownloadFile(const FileConfiguration& remote, FileConfiguration& local) {
    if (local.syncMode == FileOnDiskSyncMode) {
        if (FileChangedSince(local.lastModifiedDate, local.localPath)) {
            return false;
        }
        return local.stateCode != 2 && local.stateCode != 4;
    }
    const QString versionKey = QLatin1String("version");
    const QString remoteVersion = remote.customProperties.value(versionKey);
    // Inserts the key where it is missing: the record is to have one from now on.
    const QString localVersion = local.customProperties[versionKey];
    if (_AnyValueIsMissing(remoteVersion, localVersion)) {
        return true;
    }
    return remoteVersion.toInt() > localVersion.toInt() || remote.size != local.size;
}

const FileConfiguration DrovaneRemoteFileManager::GetFileByName(  // NOLINT(readability-const-return-type)
    const FolderConfiguration& folder, const QString& name) {
    const QString serverPath = folder.serverPath + QLatin1Char('/') + name;
    const std::shared_ptr<QUrl> url = urlBuilder->BuildUrl(serverConfiguration, serverPath);
    const std::shared_ptr<DAVPropfindRequest> request =
        httpFactory->CreatePropfindRequest(url, folder.serverId, DAVPropfindRequest::Resource);
    _Execute(request);

    const int status = request->GetStatusCode();
    if (status >= BadRequestStatus) {
        throw Failure("GetFileByName with url %0 failed with error code %1", ValueOf(url), status);
    }
    const std::shared_ptr<DAVPropfindResult> result = request->GetResult();
    if (!result) {
        return FileConfiguration();
    }
    if (result->isSingleResponse) {
        return BuildFileConfigFromFindResponse(folder, result->singleResponse);
    }
    if (result->fileResponses.isEmpty()) {
        return FileConfiguration();
    }
    return BuildFileConfigFromFindResponse(folder, result->fileResponses.constBegin().value());
}

void DrovaneRemoteFileManager::_Execute(std::shared_ptr<DAVPropfindRequest> request) {
    QList<std::shared_ptr<interf::IHttpRequest>> requests;
    requests.append(std::move(request));
    requestManager->Execute(requests);
}

std::shared_ptr<DAVPropfindResult> DrovaneRemoteFileManager::_ProcessPropfindResult(
    std::shared_ptr<DAVPropfindRequest> request) {
    const int status = request->GetStatusCode();
    if (IsPropfindFailure(status)) {
        const QUrl url = request->GetUrl();
        throw Failure("PROPFIND with url %0 failed with error code %1", url, status, url);
    }
    return request->GetResult();
}

bool DrovaneRemoteFileManager::_AnyValueIsMissing(const QString& a, const QString& b) {
    return a.isEmpty() || b.isEmpty();
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
