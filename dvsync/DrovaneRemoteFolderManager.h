#pragma once

#include <log4cplus/logger.h>

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QSet>
#include <QString>
#include <QVector>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/configuration/ServerConfiguration.h"
#include "host/core/Tr1SharedPtr.h"
#include "host/http/DAVPropfindRequest.h"
#include "host/interfaces/IHttpRequest.h"
#include "host/interfaces/IRemoteFolderManager.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/factory/IConfigurationFactory.h"
#include "host/interfaces/factory/IHttpFactory.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace sync {
namespace dv {
namespace dvsync {

/// The folders of one Drovane server account. Every operation sends its requests on the caller's thread and blocks
/// until they are answered; nothing is kept between operations and nothing is retried. Keeps its collaborators for its
/// whole life. Failures are thrown as HttpException, with the URL in the message only; whatever a collaborator throws
/// passes through. Logs as "DrovaneSyncSupport". One operation at a time.
class DVSYNC_EXPORT DrovaneRemoteFolderManager : public interf::IRemoteFolderManager {
    Q_OBJECT

public:
    /// Reads the settings of `serverId` once, through `configurationFactory`.
    DrovaneRemoteFolderManager(std::shared_ptr<interf::IUrlBuilder> urlBuilder, int serverId,
                               std::shared_ptr<interf::factory::IRequestAuthenticatorFactory> authenticatorFactory,
                               std::shared_ptr<interf::factory::IHttpFactory> httpFactory,
                               std::shared_ptr<interf::factory::IConfigurationFactory> configurationFactory);
    ~DrovaneRemoteFolderManager() override;

    /// Creates the folder inside the folder `parentFolderId`, or, with `createParents`, every folder that is missing
    /// between its server root path and itself. A folder that is there already is no failure. Writes the folder's id,
    /// owner and access mask into `folder`. A failure leaves the folders made so far.
    core::SyncResults CreateFolder(config::FolderConfiguration& folder, QString parentFolderId,
                                   bool createParents) override;

    /// Deletes the folder by its server folder id, which must not be empty. A folder that the service says does not
    /// exist counts as deleted.
    core::SyncResults DeleteFolder(config::FolderConfiguration& folder) override;

    core::SyncResults MoveFolder(const config::FolderConfiguration& from,
                                 const config::FolderConfiguration& to) override;

    bool FolderExists(const config::FolderConfiguration& folder) override;

    bool FileExists(const config::FileConfiguration& file) override;

    /// Asks by the folder's server folder id where it has one, else by its server path. False when there is no such
    /// folder (status 400 or 404) or no URL for it; `result` is untouched then.
    bool GetFolderProperties(const config::FolderConfiguration& folder, config::FolderConfiguration& result) override;

    /// The folders and projects directly in `folder`, in the key order of the answer; an empty pointer when nothing
    /// changed since its last sync time. Records the service's time in `folder`, then too.
    std::shared_ptr<QVector<config::FolderConfiguration>> GetNameSortedDirsByFolder(
        config::FolderConfiguration& folder) override;

    /// Everything below `folder`, without what lies directly in a form or in any other container that is no folder.
    /// Returns 0, or 304 or 404 with the outputs untouched. Records the service's time in `folder`, on 304 too.
    int GetAllFilesAndSubFoldersByFolder(config::FolderConfiguration& folder,
                                         std::shared_ptr<QVector<config::FolderConfiguration>>& folders,
                                         std::shared_ptr<QVector<config::FileConfiguration>>& files) override;

    int GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount, qint64& totalSize,
                      std::shared_ptr<interf::ISyncFilter> fileFilter,
                      std::shared_ptr<interf::ISyncFilter> folderFilter) override;

    /// Adds to the outputs what the service lists at the server path `path`, or in its whole tree: the files that are
    /// not directly in a form and not excluded, and the server paths of the folders that are not excluded. Returns 0,
    /// or 404 with the outputs untouched.
    int GetFolderSize(const QString& path, int folderServerId, bool wholeTree, int& fileCount, qint64& totalSize,
                      QList<QString>& subFolders, std::shared_ptr<interf::ISyncFilter> fileFilter,
                      std::shared_ptr<interf::ISyncFilter> folderFilter) override;

protected Q_SLOTS:
    // The argument is spelled as the signal's is, because Qt connects the two by their texts.
    void RequestCompleted(std::tr1::shared_ptr<sync::interf::IHttpRequest> request,
                          sync::interf::IHttpRequest::RequestState state);

private:
    // The way in for tests to what no public operation shows.
    friend class DrovaneRemoteFolderManagerAccess;

    using Headers = QList<QPair<QByteArray, QByteArray>>;

    void _Execute(const std::shared_ptr<interf::IHttpRequest>& request, bool isObserved);
    std::shared_ptr<http::DAVPropfindRequest> _CreatePropfindRequest(const QString& path, int folderServerId, int depth,
                                                                     std::shared_ptr<QUrl>& url);

    int _CreateFolder(config::FolderConfiguration& folder, QString parentFolderId);
    int _CreateFolderWithParents(config::FolderConfiguration& folder, QString parentFolderId);
    bool _UpdateFolderConfig(const QByteArray& body, config::FolderConfiguration& folder);
    bool _UpdateFolderConfig(const Headers& headers, config::FolderConfiguration& folder);

    std::shared_ptr<http::DAVPropfindResult> _ProcessPropfindResult(std::shared_ptr<http::DAVPropfindRequest> request);
    std::shared_ptr<QVector<config::FolderConfiguration>> _BuildFolderConfigsFromFindResult(
        const config::FolderConfiguration& folder, std::shared_ptr<http::DAVPropfindResult> result);
    std::shared_ptr<QVector<config::FolderConfiguration>> _BuildFolderConfigsFromFindResult(
        const config::FolderConfiguration& folder, std::shared_ptr<http::DAVPropfindResult> result, QSet<int>& ignored);
    config::FolderConfiguration _BuildFolderConfigFromFindResponse(const config::FolderConfiguration& parent,
                                                                   const http::DAVPropfindResponse& response);
    void _IgnoreByClassTypeOfParent(std::shared_ptr<http::DAVPropfindResult> result, QSet<int>& ignored);
    // A set, because a list would be searched once for each file.
    bool _ChildOfForm(const QString& path, const QSet<QString>& formPaths);

    static log4cplus::Logger _logger;

    std::shared_ptr<interf::IUrlBuilder> urlBuilder;
    std::shared_ptr<interf::factory::IRequestAuthenticatorFactory> authenticatorFactory;
    std::shared_ptr<interf::factory::IHttpFactory> httpFactory;
    std::shared_ptr<interf::factory::IConfigurationFactory> configurationFactory;
    int serverId;
    config::ServerConfiguration serverConfiguration;
    interf::IHttpRequest::RequestState lastRequestState;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
