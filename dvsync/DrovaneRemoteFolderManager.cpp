#include "dvsync/DrovaneRemoteFolderManager.h"

#include <log4cplus/loglevel.h>

#include <QDateTime>
#include <QDomDocument>
#include <QFileInfo>
#include <QRegExp>
#include <QStringList>
#include <QUrl>
#include <initializer_list>
#include <optional>
#include <utility>

#include "dvsync/Exclusion.h"
#include "dvsync/Filled.h"
#include "dvsync/HrefPath.h"
#include "dvsync/HttpFailure.h"
#include "dvsync/Log.h"
#include "dvsync/ResourceMapping.h"
#include "dvsync/XmlDocument.h"
#include "host/core/QtCompat.h"

namespace sync {
namespace dv {
namespace dvsync {

using config::FileConfiguration;
using config::FolderConfiguration;
using core::SyncResults;
using http::DAVPropfindRequest;
using http::DAVPropfindResponse;
using http::DAVPropfindResult;
using http::HttpException;
using interf::IHttpRequest;
using interf::IUrlBuilder;
using interf::factory::IHttpFactory;

namespace {

// What the user may do with a folder that he has made: everything.
const int FullAccessMask = 31;

#define FOLDER_MANAGER_LOG(level, text) DVSYNC_LOG(_logger, level, "DrovaneRemoteFolderManager", text)

SyncResults ResultsOf(SyncResults::ResultType type) {
    return SyncResults(type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
}

// Names are asked for as {namespace}prefix:name.
QStringList FolderSizePropertyNames() {
    const QString davNamespace = QLatin1String("DAV:");
    QStringList names;
    for (const char* rest : {"}D:getcontenttype", "}P:getcontentlength", "}P:resourceclasstype"}) {
        names.append(QLatin1Char('{') + davNamespace + QLatin1String(rest));
    }
    return names;
}

bool IsHeader(const QPair<QByteArray, QByteArray>& header, const char* name) {
    return QString::fromUtf8(header.first).compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

// Whether the reason that the service gives has all of `words`, in any order and letter case.
bool ReasonHasWords(const QList<QPair<QByteArray, QByteArray>>& headers, std::initializer_list<const char*> words) {
    for (const QPair<QByteArray, QByteArray>& header : headers) {
        if (!IsHeader(header, "x-ovs-reason-phrase")) {
            continue;
        }
        const QStringList reason =
            core::compat::SplitSkippingEmptyParts(QString::fromUtf8(header.second), QRegExp(QLatin1String("[\\s:.]")));
        for (const char* word : words) {
            if (!reason.contains(QLatin1String(word), Qt::CaseInsensitive)) {
                return false;
            }
        }
        return true;
    }
    return false;
}

// What of `path` lies below `root`; all of it where it does not lie there.
QString PathBelow(const QString& path, const QString& root) {
    if (!path.startsWith(root, Qt::CaseInsensitive)) {
        return path;
    }
    const QString below = path.mid(root.size());
    return below.isEmpty() || below.startsWith(QLatin1Char('/')) ? below : path;
}

void CopyIdentity(const FolderConfiguration& from, FolderConfiguration& to) {
    to.setServerFolderId(from.getServerFolderId());
    to.ownerId = from.ownerId;
    to.accessMask = from.accessMask;
}

QDomElement FirstElement(const QDomElement& parent, const char* name) {
    return parent.elementsByTagName(QLatin1String(name)).item(0).toElement();
}

}  // namespace

log4cplus::Logger DrovaneRemoteFolderManager::_logger =
    log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("DrovaneSyncSupport"));

DrovaneRemoteFolderManager::DrovaneRemoteFolderManager(
    std::shared_ptr<interf::IUrlBuilder> urlBuilder_, int serverId_,
    std::shared_ptr<interf::factory::IRequestAuthenticatorFactory> authenticatorFactory_,
    std::shared_ptr<interf::factory::IHttpFactory> httpFactory_,
    std::shared_ptr<interf::factory::IConfigurationFactory> configurationFactory_)
    : urlBuilder(std::move(urlBuilder_)),
      authenticatorFactory(std::move(authenticatorFactory_)),
      httpFactory(std::move(httpFactory_)),
      configurationFactory(std::move(configurationFactory_)),
      serverId(serverId_),
      serverConfiguration(configurationFactory->CreateServerConfigManager()->GetServerConfiguration(serverId)),
      lastRequestState(IHttpRequest::StateNone) {}

DrovaneRemoteFolderManager::~DrovaneRemoteFolderManager() = default;

SyncResults DrovaneRemoteFolderManager::CreateFolder(FolderConfiguration& folder, QString parentFolderId,
                                                     bool createParents) {
    const int code = createParents ? _CreateFolderWithParents(folder, std::move(parentFolderId))
                                   : _CreateFolder(folder, std::move(parentFolderId));
    if (code >= BadRequestStatus) {
        const std::shared_ptr<QUrl> url = urlBuilder->BuildUrl(serverConfiguration, folder.getServerPath());
        throw Failure("CreateFolder failed for url %0. Error code: %1.", ValueOf(url), code);
    }
    return ResultsOf(SyncResults::FolderCreated);
}

SyncResults DrovaneRemoteFolderManager::DeleteFolder(FolderConfiguration& folder) {
    if (folder.getServerFolderId().isEmpty()) {
        throw HttpException(Filled("DeleteFolder failed for url %0. Server folder id is blank.", folder.serverPath),
                            BadRequestStatus, QUrl());
    }
    const std::shared_ptr<QUrl> url =
        urlBuilder->BuildFolderUrl(serverConfiguration, folder, QString(), IUrlBuilder::FolderDeletion);
    if (!url) {
        throw HttpException(Filled("Failed to delete folder %1. Failed to build url.", folder.serverPath),
                            BadRequestStatus, QUrl());
    }
    const std::shared_ptr<IHttpRequest> request =
        httpFactory->CreateFolderRequest(IHttpFactory::FolderDeletion, url, folder);
    _Execute(request, true);

    int status = request->GetStatusCode();
    if (status == BadRequestStatus && ReasonHasWords(request->GetResponseHeaders(), {"does", "not", "exist"})) {
        FOLDER_MANAGER_LOG(log4cplus::INFO_LOG_LEVEL,
                           Filled("Failed to delete folder %1. The folder doesn't exist in server. Assuming the delete "
                                  "operation as success.",
                                  folder.serverPath));
        status = OkStatus;
    }
    if (status >= BadRequestStatus) {
        throw Failure("DeleteFolder failed for url %0. Error code: %1.", *url, status);
    }
    return ResultsOf(SyncResults::FolderDeleted);
}

SyncResults DrovaneRemoteFolderManager::MoveFolder(const FolderConfiguration& from, const FolderConfiguration& to) {
    const std::shared_ptr<QUrl> source = urlBuilder->BuildUrl(serverConfiguration, from.getServerPath());
    const std::shared_ptr<QUrl> destination = urlBuilder->BuildUrl(serverConfiguration, to.getServerPath());
    FOLDER_MANAGER_LOG(log4cplus::DEBUG_LOG_LEVEL, QLatin1String("Move: ") + ValueOf(source).toString() +
                                                       QLatin1String(" to ") + ValueOf(destination).toString() +
                                                       QLatin1String("\r\n"));
    const std::shared_ptr<IHttpRequest> request = httpFactory->CreateMoveRequest(source, destination, from.serverId);
    _Execute(request, true);

    const int status = request->GetStatusCode();
    if (status >= BadRequestStatus || (status == 0 && lastRequestState == IHttpRequest::StateFailed)) {
        throw HttpException(Filled("MoveFolder failed. From Url: %0 To Url: %1. Error code: %2.",
                                   core::compat::DecodedPath(ValueOf(source)),
                                   core::compat::DecodedPath(ValueOf(destination)), QString::number(status)),
                            status, QUrl());
    }
    return ResultsOf(SyncResults::FolderMoved);
}

bool DrovaneRemoteFolderManager::FolderExists(const FolderConfiguration& folder) {
    FolderConfiguration scratch;
    return GetFolderProperties(folder, scratch);
}

bool DrovaneRemoteFolderManager::FileExists(const FileConfiguration& file) {
    const std::shared_ptr<QUrl> url = urlBuilder->BuildUrl(serverConfiguration, file.serverPath);
    const std::shared_ptr<IHttpRequest> request = httpFactory->CreateFileRequest(url, file.serverId, 0);
    _Execute(request, false);

    const int status = request->GetStatusCode();
    if (status == NotFoundStatus) {
        return false;
    }
    if (status >= BadRequestStatus || status == FoundStatus) {
        throw Failure("FileExists failed for url %0. Error code: %1.", ValueOf(url), status);
    }
    return true;
}

bool DrovaneRemoteFolderManager::GetFolderProperties(const FolderConfiguration& folder, FolderConfiguration& result) {
    const int urlKind = folder.getServerFolderId().isEmpty() ? IUrlBuilder::FolderByPath : IUrlBuilder::FolderById;
    const std::shared_ptr<QUrl> url = urlBuilder->BuildFolderUrl(serverConfiguration, folder, QString(), urlKind);
    if (!url) {
        FOLDER_MANAGER_LOG(
            log4cplus::ERROR_LOG_LEVEL,
            Filled("Failed to get folder properties for folder %1. Failed to build url.", folder.serverPath));
        return false;
    }
    const std::shared_ptr<IHttpRequest> request =
        httpFactory->CreateFolderRequest(IHttpFactory::FolderQuery, url, folder);
    _Execute(request, true);

    const int status = request->GetStatusCode();
    if (status == BadRequestStatus || status == NotFoundStatus) {
        return false;
    }
    if (status > BadRequestStatus || status == FoundStatus ||
        (status == 0 && lastRequestState == IHttpRequest::StateFailed)) {
        // FolderExists is what callers know this question by.
        throw Failure("FolderExists failed for url %0. Error code: %1.", *url, status);
    }
    result = folder;
    _UpdateFolderConfig(request->GetResponseHeaders(), result);
    return true;
}

std::shared_ptr<QVector<FolderConfiguration>> DrovaneRemoteFolderManager::GetNameSortedDirsByFolder(
    FolderConfiguration& folder) {
    std::shared_ptr<QUrl> url;
    const std::shared_ptr<DAVPropfindRequest> request =
        _CreatePropfindRequest(folder.serverPath, folder.serverId, DAVPropfindRequest::Children, url);
    request->SetModifiedSinceTime(folder.getLastSyncTime());
    _Execute(request, true);

    const int status = request->GetStatusCode();
    if (IsPropfindFailure(status)) {
        throw Failure("GetNameSortedDirsByFolder failed for url %0. Error code: %1.", ValueOf(url), status);
    }
    const std::shared_ptr<DAVPropfindResult> result = _ProcessPropfindResult(request);
    if (result && result->serverTime.isValid()) {
        folder.setLastServerSyncRequestTime(result->serverTime);
    }
    if (status == NotModifiedStatus) {
        return std::shared_ptr<QVector<FolderConfiguration>>();
    }
    return _BuildFolderConfigsFromFindResult(folder, result);
}

int DrovaneRemoteFolderManager::GetAllFilesAndSubFoldersByFolder(FolderConfiguration& folder,
                                                                 std::shared_ptr<QVector<FolderConfiguration>>& folders,
                                                                 std::shared_ptr<QVector<FileConfiguration>>& files) {
    std::shared_ptr<QUrl> url;
    const std::shared_ptr<DAVPropfindRequest> request =
        _CreatePropfindRequest(folder.serverPath, folder.serverId, DAVPropfindRequest::Tree, url);
    request->SetModifiedSinceTime(folder.getLastSyncTime());
    _Execute(request, true);

    const int status = request->GetStatusCode();
    if (status == NotFoundStatus) {
        return NotFoundStatus;
    }
    if (IsPropfindFailure(status)) {
        throw Failure("GetAllFilesAndSubFoldersByFolder failed for url %0. Error code: %1.", ValueOf(url), status);
    }
    const std::shared_ptr<DAVPropfindResult> result = request->GetResult();
    if (result && result->serverTime.isValid()) {
        folder.setLastServerSyncRequestTime(result->serverTime);
    }
    if (status == NotModifiedStatus) {
        return NotModifiedStatus;
    }
    QSet<int> ignored;
    folders = _BuildFolderConfigsFromFindResult(folder, result, ignored);
    _IgnoreByClassTypeOfParent(result, ignored);
    files = BuildFileConfigsFromFindResult(folder, result);
    return 0;
}

int DrovaneRemoteFolderManager::GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount,
                                              qint64& totalSize, std::shared_ptr<interf::ISyncFilter> fileFilter,
                                              std::shared_ptr<interf::ISyncFilter> folderFilter) {
    QList<QString> subFolders;
    return GetFolderSize(path, folderServerId, wholeTree, fileCount, totalSize, subFolders, std::move(fileFilter),
                         std::move(folderFilter));
}

int DrovaneRemoteFolderManager::GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount,
                                              qint64& totalSize, QList<QString>& subFolders,
                                              std::shared_ptr<interf::ISyncFilter> fileFilter,
                                              std::shared_ptr<interf::ISyncFilter> folderFilter) {
    // The caller's text may be one that changes with the outputs.
    const QString asked = path;  // NOLINT(performance-unnecessary-copy-initialization)
    std::shared_ptr<QUrl> url;
    const std::shared_ptr<DAVPropfindRequest> request = _CreatePropfindRequest(
        asked, folderServerId, wholeTree ? DAVPropfindRequest::Tree : DAVPropfindRequest::Children, url);
    request->SetProperties(FolderSizePropertyNames());
    _Execute(request, true);

    const int status = request->GetStatusCode();
    if (status == NotFoundStatus) {
        return NotFoundStatus;
    }
    if (IsPropfindFailure(status)) {
        // The listing's name, which is what callers know this exchange by.
        throw Failure("GetAllFilesAndSubFoldersByFolder failed for url %0. Error code: %1.", ValueOf(url), status);
    }
    const std::shared_ptr<DAVPropfindResult> result = request->GetResult();
    if (!result) {
        return 0;
    }

    QSet<QString> formPaths;
    for (auto entry = result->fileResponses.constBegin(); entry != result->fileResponses.constEnd(); ++entry) {
        const DAVPropfindResponse& response = entry.value();
        const QString entryPath = PathOfHref(response.getHref()).value_or(QString()).mid(1);
        if (IsFormClassType(response)) {
            formPaths.insert(entryPath);
            continue;
        }
        if (!IsFileClassType(response) || _ChildOfForm(entryPath, formPaths)) {
            continue;
        }
        const qint64 size = response.contentLength;
        if (!IsFileExcluded(fileFilter, folderFilter, entryPath.mid(asked.size()), size)) {
            ++fileCount;
            totalSize += size;
        }
    }
    for (auto entry = result->collectionResponses.constBegin(); entry != result->collectionResponses.constEnd();
         ++entry) {
        if (!IsFolderClassType(entry.value())) {
            continue;
        }
        const QString entryPath = PathOfHref(entry.value().getHref()).value_or(QString()).mid(1);
        if (!IsFolderPathExcluded(folderFilter, entryPath)) {
            subFolders.append(entryPath);
        }
    }
    return 0;
}

void DrovaneRemoteFolderManager::RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest> request,
                                                  sync::interf::IHttpRequest::RequestState state) {
    Q_UNUSED(request);
    lastRequestState = state;
}

void DrovaneRemoteFolderManager::_Execute(const std::shared_ptr<IHttpRequest>& request, bool isObserved) {
    QList<std::shared_ptr<IHttpRequest>> requests;
    requests.append(request);
    const std::shared_ptr<interf::IRequestExecutor> executor =
        httpFactory->CreateRequestExecutor(serverId, authenticatorFactory);
    if (isObserved) {
        connect(executor.get(),
                SIGNAL(RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest>,
                                        sync::interf::IHttpRequest::RequestState)),
                this,
                SLOT(RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest>,
                                      sync::interf::IHttpRequest::RequestState)));
    }
    lastRequestState = IHttpRequest::StateNone;
    executor->Execute(requests);
}

std::shared_ptr<DAVPropfindRequest> DrovaneRemoteFolderManager::_CreatePropfindRequest(const QString& path,
                                                                                       int folderServerId, int depth,
                                                                                       std::shared_ptr<QUrl>& url) {
    url = urlBuilder->BuildUrl(serverConfiguration, path);
    return httpFactory->CreatePropfindRequest(url, folderServerId, depth);
}

int DrovaneRemoteFolderManager::_CreateFolder(FolderConfiguration& folder, QString parentFolderId) {
    const std::shared_ptr<QUrl> url =
        urlBuilder->BuildFolderUrl(serverConfiguration, folder, parentFolderId, IUrlBuilder::FolderCreation);
    if (!url) {
        FOLDER_MANAGER_LOG(log4cplus::ERROR_LOG_LEVEL,
                           Filled("Failed to create server folder %1. Failed to build url.", folder.serverPath));
        return BadRequestStatus;
    }
    const std::shared_ptr<IHttpRequest> request =
        httpFactory->CreateFolderRequest(IHttpFactory::FolderCreation, url, folder);
    _Execute(request, true);

    const int status = request->GetStatusCode();
    if (status == 0) {
        return lastRequestState == IHttpRequest::StateFailed ? ServiceUnavailableStatus : 0;
    }
    if (status < BadRequestStatus) {
        _UpdateFolderConfig(request->GetResponseBody(), folder);
        return status;
    }
    if (status != BadRequestStatus ||
        !ReasonHasWords(request->GetResponseHeaders(), {"existing", "file", "already", "exists"})) {
        return status;
    }
    FOLDER_MANAGER_LOG(
        log4cplus::INFO_LOG_LEVEL,
        Filled("Failed to create folder %1. The folder already exists in server. Getting the folder properties.",
               folder.serverPath));
    FolderConfiguration fetched;
    if (!GetFolderProperties(folder, fetched)) {
        return BadRequestStatus;
    }
    CopyIdentity(fetched, folder);
    return OkStatus;
}

int DrovaneRemoteFolderManager::_CreateFolderWithParents(FolderConfiguration& folder, QString parentFolderId) {
    const QStringList names =
        core::compat::SplitSkippingEmptyParts(PathBelow(folder.serverPath, folder.serverRootPath), QLatin1Char('/'));
    QString current = folder.serverRootPath;
    int code = 0;
    for (int i = 0; i < names.size(); ++i) {
        if (!current.isEmpty()) {
            current += QLatin1Char('/');
        }
        current += names.at(i);

        FolderConfiguration step;
        step.serverPath = current;
        step.companionServerPath = current;
        step.name = QFileInfo(current).fileName();
        step.resourceId = QLatin1String("0");
        step.serverKey = folder.serverKey;
        step.serverId = folder.serverId;
        FolderConfiguration fetched;
        if (GetFolderProperties(step, fetched)) {
            step = fetched;
        } else {
            code = _CreateFolder(step, parentFolderId);
            if (code >= BadRequestStatus) {
                break;
            }
        }
        parentFolderId = step.getServerFolderId();
        if (i == names.size() - 1) {
            CopyIdentity(step, folder);
        }
    }
    return code;
}

bool DrovaneRemoteFolderManager::_UpdateFolderConfig(const QByteArray& body, FolderConfiguration& folder) {
    if (body.isEmpty()) {
        FOLDER_MANAGER_LOG(
            log4cplus::ERROR_LOG_LEVEL,
            Filled("Failed to update folder config after creating folder %1. Response from server is empty.",
                   folder.serverPath));
        return false;
    }
    QDomDocument document;
    XmlError error;
    if (!ReadXmlDocument(body, document, error)) {
        FOLDER_MANAGER_LOG(
            log4cplus::ERROR_LOG_LEVEL,
            Filled("Failed to update folder config after creating folder %1. Error parsing response xml: "
                   "%2 at line %3, column %4, body = %5",
                   folder.serverPath, error.message, QString::number(error.line), QString::number(error.column),
                   QString::fromUtf8(body)));
        return false;
    }
    const QDomElement response = document.elementsByTagName(QLatin1String("Response")).item(0).toElement();
    const QDomElement created = FirstElement(FirstElement(response, "Folders"), "Folder");
    if (created.isNull()) {
        FOLDER_MANAGER_LOG(log4cplus::ERROR_LOG_LEVEL,
                           Filled("Failed to update folder config after creating folder %1. Response xml doesn't "
                                  "contain node path Response/Folders/Folder.",
                                  folder.serverPath));
        return false;
    }
    const QDomElement id = FirstElement(created, "id");
    if (!id.text().isEmpty()) {
        folder.setServerFolderId(id.text());
    }
    const QDomElement ownerId = FirstElement(created, "ownerId");
    if (!ownerId.isNull()) {
        folder.ownerId = ownerId.text();
    }
    folder.accessMask = FullAccessMask;
    return true;
}

bool DrovaneRemoteFolderManager::_UpdateFolderConfig(const Headers& headers, FolderConfiguration& folder) {
    if (headers.isEmpty()) {
        FOLDER_MANAGER_LOG(
            log4cplus::ERROR_LOG_LEVEL,
            Filled("Failed to update folder config from response headers for folder %1. Response headers "
                   "from server is empty.",
                   folder.serverPath));
        return false;
    }
    for (const QPair<QByteArray, QByteArray>& header : headers) {
        const QString value = QString::fromUtf8(header.second);
        if (value.isEmpty()) {
            continue;
        }
        if (IsHeader(header, "x-ovs-id")) {
            folder.setServerFolderId(value);
        } else if (IsHeader(header, "x-ovs-ownerid")) {
            folder.ownerId = value;
        }
    }
    return true;
}

std::shared_ptr<DAVPropfindResult> DrovaneRemoteFolderManager::_ProcessPropfindResult(
    std::shared_ptr<DAVPropfindRequest> request) {
    const int status = request->GetStatusCode();
    if (IsPropfindFailure(status)) {
        const QUrl url = request->GetUrl();
        throw Failure("PROPFIND failed for url %0. Error code: %1.", url, status, url);
    }
    return request->GetResult();
}

std::shared_ptr<QVector<FolderConfiguration>> DrovaneRemoteFolderManager::_BuildFolderConfigsFromFindResult(
    const FolderConfiguration& folder, std::shared_ptr<DAVPropfindResult> result) {
    QSet<int> ignored;
    return _BuildFolderConfigsFromFindResult(folder, std::move(result), ignored);
}

std::shared_ptr<QVector<FolderConfiguration>> DrovaneRemoteFolderManager::_BuildFolderConfigsFromFindResult(
    const FolderConfiguration& folder, std::shared_ptr<DAVPropfindResult> result, QSet<int>& ignored) {
    auto folders = std::make_shared<QVector<FolderConfiguration>>();
    if (!result) {
        return folders;
    }
    // The non-const begin() detaches the map, so that the walk never touches a copy held elsewhere.
    for (auto entry = result->collectionResponses.begin(); entry != result->collectionResponses.end(); ++entry) {
        if (IsFolderClassType(entry.value())) {
            folders->append(_BuildFolderConfigFromFindResponse(folder, entry.value()));
        } else {
            ignored.insert(entry.value().resourceId);
        }
    }
    return folders;
}

FolderConfiguration DrovaneRemoteFolderManager::_BuildFolderConfigFromFindResponse(
    const FolderConfiguration& parent, const DAVPropfindResponse& response) {
    FolderConfiguration folder;
    folder.name = response.getFilename();
    folder.lastModifiedDate = response.getLastModifiedDate();
    folder.resourceId = QString::number(response.resourceId);
    // A record of nothing must not name the parent.
    if (const std::optional<QString> path = PathOfHref(response.getHref())) {
        folder.serverPath = WithoutLeadingSlash(*path);
        if (folder.serverPath.endsWith(QLatin1Char('/'))) {
            folder.serverPath.chop(1);
        }
        folder.serverRootPath = folder.serverPath;
        folder.localPath = folder.serverRootPath;
        folder.localPath.replace(0, parent.serverRootPath.size(), parent.localPath);
    }
    folder.serverKey = parent.serverKey;
    folder.ownerId = response.getOwnerId();
    folder.setPrivileges(response.getPrivileges());
    folder.serverId = parent.serverId;
    folder.setServerFolderId(response.getItemId());
    return folder;
}

void DrovaneRemoteFolderManager::_IgnoreByClassTypeOfParent(std::shared_ptr<DAVPropfindResult> result,
                                                            QSet<int>& ignored) {
    if (!result) {
        return;
    }
    QMap<QString, DAVPropfindResponse>& entries = result->fileResponses;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        if (!IsFileClassType(entry.value())) {
            ignored.insert(entry.value().resourceId);
        }
    }
    for (auto entry = entries.begin(); entry != entries.end();) {
        if (ignored.contains(entry.value().parentResourceId)) {
            entry = entries.erase(entry);
        } else {
            ++entry;
        }
    }
}

bool DrovaneRemoteFolderManager::_ChildOfForm(const QString& path, const QSet<QString>& formPaths) {
    return formPaths.contains(path.left(path.lastIndexOf(QLatin1Char('/'))));
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
