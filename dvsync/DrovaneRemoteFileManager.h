#pragma once

#include <QString>
#include <QVector>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "host/configuration/ServerConfiguration.h"
#include "host/http/DAVPropfindRequest.h"
#include "host/interfaces/IRemoteFileManager.h"
#include "host/interfaces/IRequestManager.h"
#include "host/interfaces/ISyncConfiguration.h"
#include "host/interfaces/IUrlBuilder.h"
#include "host/interfaces/factory/IHttpFactory.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"
#include "host/interfaces/factory/IRequestAuthenticatorFactory.h"

namespace sync {
namespace dv {
namespace dvsync {

/// The files of one Drovane server account. A listing and a lookup send one PROPFIND each, on the caller's thread, and
/// block until it is answered; ShouldDownloadFile sends nothing, and looks at the local disk. Nothing is kept between
/// operations and nothing is retried or logged. Keeps its collaborators for its whole life. Whatever a collaborator
/// throws passes through. Not thread-safe.
class DVSYNC_EXPORT DrovaneRemoteFileManager : public interf::IRemoteFileManager {
    Q_OBJECT

public:
    /// Reads the settings of `serverId` once, through sync::factory::ConfigurationFactory, which must have been
    /// installed.
    DrovaneRemoteFileManager(std::shared_ptr<interf::IUrlBuilder> urlBuilder,
                             std::shared_ptr<interf::IRequestManager> requestManager, int serverId,
                             std::shared_ptr<interf::factory::IRequestAuthenticatorFactory> authenticatorFactory,
                             std::shared_ptr<interf::factory::IHttpFactory> httpFactory,
                             std::shared_ptr<interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory,
                             std::shared_ptr<interf::ISyncConfiguration> syncConfiguration);
    ~DrovaneRemoteFileManager() override;

    /// The files of `folder` in the key order of the answer. Returns 0, or 304 when nothing changed since the folder's
    /// last sync time, or 404 when the service has no such folder; `files` is replaced on 0 and untouched otherwise.
    /// Records the service's time in `folder`, on 304 too. Throws HttpException for a status of 302 or of 400 and
    /// above.
    int GetNameSortedFilesByFolder(config::FolderConfiguration& folder,
                                   std::shared_ptr<QVector<config::FileConfiguration>>& files) override;

    /// A record in sync mode 2 goes by the file on disk and the state code: a file that is newer than its record, and
    /// the states 2 and 4, are not downloaded. Every other record goes by version and size; a `local` without a version
    /// gains an empty one then.
    bool ShouldDownloadFile(const config::FileConfiguration& remote, config::FileConfiguration& local) override;

    /// The record of what the answer holds first, whatever its class type, or a default record. `name` is appended to
    /// the folder's server path as it stands. Throws HttpException for a status of 400 and above.
    const config::FileConfiguration GetFileByName(  // NOLINT(readability-const-return-type)
        const config::FolderConfiguration& folder, const QString& name) override;

private:
    // The way in for tests to what no public operation reaches.
    friend class DrovaneRemoteFileManagerAccess;

    void _Execute(std::shared_ptr<http::DAVPropfindRequest> request);
    std::shared_ptr<http::DAVPropfindResult> _ProcessPropfindResult(std::shared_ptr<http::DAVPropfindRequest> request);
    bool _AnyValueIsMissing(const QString& a, const QString& b);

    std::shared_ptr<interf::IUrlBuilder> urlBuilder;
    std::shared_ptr<interf::IRequestManager> requestManager;
    std::shared_ptr<interf::factory::IRequestAuthenticatorFactory> authenticatorFactory;
    std::shared_ptr<interf::factory::IHttpFactory> httpFactory;
    std::shared_ptr<interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory;
    int serverId;
    config::ServerConfiguration serverConfiguration;
    std::shared_ptr<interf::ISyncConfiguration> syncConfiguration;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
